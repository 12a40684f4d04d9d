# Line and branch coverage.
include(${CMAKE_CURRENT_LIST_DIR}/debug.cmake)
set(CMAKE_CXX_FLAGS "--coverage -fprofile-abs-path -fprofile-update=atomic" CACHE STRING "")
