# The common part of all named configurations. Builds without a preset do not use it, so warnings are no errors there.
set(CMAKE_CXX_COMPILER_LAUNCHER ccache CACHE STRING "")
set(CMAKE_EXPORT_COMPILE_COMMANDS ON CACHE BOOL "")
set(CMAKE_COMPILE_WARNING_AS_ERROR ON CACHE BOOL "")
