# What is built fastest: without debug information, and optimised no more than deep recursion on a small stack needs.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
set(CMAKE_BUILD_TYPE MinSizeRel CACHE STRING "")
set(CMAKE_CXX_FLAGS_MINSIZEREL "-O1 -DNDEBUG" CACHE STRING "")
# A test that hangs on a break has noticed it.
set(VELODESK_IMPATIENT_TESTS ON CACHE BOOL "")
