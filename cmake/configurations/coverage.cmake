# Line and branch coverage by clang, which counts the conditions in the sources but no exception paths.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
set(CMAKE_BUILD_TYPE Debug CACHE STRING "")
set(CMAKE_CXX_COMPILER clang++ CACHE STRING "")
# All processes of a program add to the same file. It is in a folder that tests can write.
set(CMAKE_CXX_FLAGS "-fprofile-instr-generate=${CMAKE_BINARY_DIR}/profiles/%m.profraw -fcoverage-mapping" CACHE STRING "")
