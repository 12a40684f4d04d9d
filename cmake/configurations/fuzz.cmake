# libFuzzer targets, with address and undefined behaviour sanitizers.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "")
set(CMAKE_CXX_COMPILER clang++ CACHE STRING "")
set(CMAKE_CXX_FLAGS "-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined \
-fno-omit-frame-pointer" CACHE STRING "")
set(BUILD_TESTING OFF CACHE BOOL "")
set(VELODESK_BUILD_FUZZERS ON CACHE BOOL "")
