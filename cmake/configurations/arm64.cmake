# Like release, for arm64, with Debian's cross compiler.
include(${CMAKE_CURRENT_LIST_DIR}/release.cmake)
set(CMAKE_TOOLCHAIN_FILE ${CMAKE_CURRENT_LIST_DIR}/../arm64.cmake CACHE FILEPATH "")
