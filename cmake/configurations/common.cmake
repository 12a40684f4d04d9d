# The common part of all named configurations. A plain build does not use it: it warns, but warnings are no errors.
set(CMAKE_CXX_COMPILER_LAUNCHER ccache CACHE STRING "")
set(CMAKE_EXPORT_COMPILE_COMMANDS ON CACHE BOOL "")
set(CMAKE_COMPILE_WARNING_AS_ERROR ON CACHE BOOL "")
