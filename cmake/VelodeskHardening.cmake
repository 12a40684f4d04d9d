# How the program is made as it ships. Release only: sanitizers, coverage and the debugger want a plainer program.
include(CheckPIESupported)
check_pie_supported()

add_library(velodesk_hardening INTERFACE)
set(branch_protection)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|i.86)$")
    set(branch_protection -fcf-protection=full)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
    set(branch_protection -mbranch-protection=standard)
endif()
target_compile_options(velodesk_hardening INTERFACE
    "$<$<CONFIG:Release>:-fstack-protector-strong;-fstack-clash-protection;${branch_protection}>")
target_compile_definitions(velodesk_hardening INTERFACE $<$<CONFIG:Release>:_FORTIFY_SOURCE=2>)
target_link_options(velodesk_hardening INTERFACE
    "$<$<CONFIG:Release>:LINKER:-z,relro,-z,now,-z,noexecstack;LINKER:--build-id=sha1>")

# A part of the program: hardened, with debug information, and the same whatever the folder in which it is built.
function(velodesk_ship target)
    target_link_libraries(${target} PRIVATE velodesk_hardening)
    # The build folder lies within the sources: of two maps that fit, the later counts. It keeps its depth, for older
    # releases of CMake name the sources from there.
    set(maps -ffile-prefix-map=${PROJECT_SOURCE_DIR}=/velodesk
        -ffile-prefix-map=${PROJECT_BINARY_DIR}=/velodesk/build/release)
    target_compile_options(${target} PRIVATE "$<$<CONFIG:Release>:-g;${maps}>")
endfunction()

# Moves the debug information of a program into a file of its own and leaves the program a link to it. Right after
# linking, so that the tests run the very file that ships.
function(velodesk_split_debuginfo target)
    if(NOT CMAKE_BUILD_TYPE STREQUAL "Release")
        return()
    endif()
    get_target_property(directory ${target} RUNTIME_OUTPUT_DIRECTORY)
    set(program ${directory}/${target})
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${CMAKE_OBJCOPY} --only-keep-debug --compress-debug-sections ${program} ${program}.debug
        COMMAND ${CMAKE_STRIP} --strip-unneeded --remove-section=.comment ${program}
        COMMAND ${CMAKE_OBJCOPY} --add-gnu-debuglink=${program}.debug ${program}
        BYPRODUCTS ${program}.debug
        VERBATIM)
endfunction()

# A library that others link: without debug information, whose paths and lines would be ours.
function(velodesk_strip_library target)
    if(CMAKE_BUILD_TYPE STREQUAL "Release")
        add_custom_command(TARGET ${target} POST_BUILD
            COMMAND ${CMAKE_STRIP} --strip-debug --remove-section=.comment --enable-deterministic-archives
                $<TARGET_FILE:${target}>
            VERBATIM)
    endif()
endfunction()
