# Address and undefined behaviour sanitizers.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "")
set(CMAKE_CXX_FLAGS "-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer \
-Wno-maybe-uninitialized" CACHE STRING "")
