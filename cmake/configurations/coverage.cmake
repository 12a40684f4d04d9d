# Line and branch coverage by clang, which counts conditions as they are written and no exception's way.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
set(CMAKE_BUILD_TYPE Debug CACHE STRING "")
set(CMAKE_CXX_COMPILER clang++ CACHE STRING "")
# All that run one program add to one file; it lies where tests may write.
set(CMAKE_CXX_FLAGS "-fprofile-instr-generate=${CMAKE_BINARY_DIR}/profiles/%m.profraw -fcoverage-mapping" CACHE STRING "")
