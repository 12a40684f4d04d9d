# Optimised, without tests, with the programs of bench/run.
include(${CMAKE_CURRENT_LIST_DIR}/release.cmake)
set(BUILD_TESTING OFF CACHE BOOL "")
set(VELODESK_BUILD_BENCHMARKS ON CACHE BOOL "")
