# The program as it ships, with its tests.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
set(CMAKE_BUILD_TYPE Release CACHE STRING "")
