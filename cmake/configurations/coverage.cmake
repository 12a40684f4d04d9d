# Line and branch coverage by clang, which counts conditions as they are written and no exception paths.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
set(CMAKE_BUILD_TYPE Debug CACHE STRING "")
set(CMAKE_CXX_COMPILER clang++ CACHE STRING "")
# All processes of one program add to the same file, which is in a folder that tests may write.
set(CMAKE_CXX_FLAGS "-fprofile-instr-generate=${CMAKE_BINARY_DIR}/profiles/%m.profraw -fcoverage-mapping" CACHE STRING "")
