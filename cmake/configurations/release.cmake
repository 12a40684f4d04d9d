# Optimised, with the tests. The packages use the flags of dpkg-buildflags instead (debian/rules).
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
set(CMAKE_BUILD_TYPE Release CACHE STRING "")
