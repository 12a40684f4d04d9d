# What every named configuration of ours has. A plain build does without: it warns, but no warning ends it.
set(CMAKE_CXX_COMPILER_LAUNCHER ccache CACHE STRING "")
set(CMAKE_EXPORT_COMPILE_COMMANDS ON CACHE BOOL "")
set(CMAKE_COMPILE_WARNING_AS_ERROR ON CACHE BOOL "")
