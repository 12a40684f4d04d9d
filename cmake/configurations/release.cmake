# Optimised, with the tests. The flags of the packages are those of dpkg-buildflags instead (debian/rules).
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
set(CMAKE_BUILD_TYPE Release CACHE STRING "")
