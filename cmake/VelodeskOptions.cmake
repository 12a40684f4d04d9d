# The compile options of all targets of this project. No option is set globally.
add_library(velodesk_options INTERFACE)
target_compile_definitions(velodesk_options INTERFACE QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING
    # Qt 5.15.2 is the oldest supported version. Some deprecated functions have no replacement in it.
    QT_NO_DEPRECATED_WARNINGS)
# format-y2k: log lines begin with a two-digit year.
target_compile_options(velodesk_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wformat=2 -Wno-format-y2k
    -fvisibility=hidden -fvisibility-inlines-hidden)
if(CMAKE_COMPILE_WARNING_AS_ERROR AND CMAKE_VERSION VERSION_LESS 3.24)
    # CMake before 3.24 does not know this variable.
    target_compile_options(velodesk_options INTERFACE -Werror)
endif()

# Configures a target of this project: our warnings, no compiler extensions.
#   velodesk_configure(TARGET [MOC_AND_UIC])   MOC_AND_UIC: the target has classes with signals or forms
function(velodesk_configure target)
    cmake_parse_arguments(ARG "MOC_AND_UIC" "" "" ${ARGN})
    set_target_properties(${target} PROPERTIES
        CXX_EXTENSIONS OFF
        CXX_STANDARD 17
        CXX_STANDARD_REQUIRED ON
        AUTOMOC ${ARG_MOC_AND_UIC}
        AUTOUIC ${ARG_MOC_AND_UIC}
        POSITION_INDEPENDENT_CODE ON)
    # The options apply only to our sources. Targets that link or install a library do not inherit them.
    target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:velodesk_options>)
    set(scope PRIVATE)
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "STATIC_LIBRARY")
        set(scope PUBLIC)
    endif()
    target_compile_features(${target} ${scope} cxx_std_17)
    target_include_directories(${target} ${scope} $<BUILD_INTERFACE:${velodesk_SOURCE_DIR}/src>)
endfunction()
