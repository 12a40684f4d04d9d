# Thread sanitizer.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "")
set(CMAKE_CXX_FLAGS "-fsanitize=thread -fno-omit-frame-pointer -Wno-maybe-uninitialized" CACHE STRING "")
