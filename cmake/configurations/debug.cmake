# Debug information, no optimisation.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
set(CMAKE_BUILD_TYPE Debug CACHE STRING "")
