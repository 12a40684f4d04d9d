# What is built fastest: without optimisation and without debug information.
include(${CMAKE_CURRENT_LIST_DIR}/debug.cmake)
set(CMAKE_CXX_FLAGS_DEBUG "" CACHE STRING "")
