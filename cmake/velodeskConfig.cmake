# find_package(velodesk) gives velodesk::statuschannel, the engine's end of the assistant's status channel.
include(CMakeFindDependencyMacro)
find_dependency(Qt5 5.15 COMPONENTS Core Network)
find_dependency(Threads)

# By where this file really lies: CMake may have found it through the link /lib.
get_filename_component(velodesk_prefix ${CMAKE_CURRENT_LIST_DIR} REALPATH)
get_filename_component(velodesk_prefix ${velodesk_prefix}/../../../.. ABSOLUTE)

if(NOT TARGET velodesk::statuschannel)
    add_library(velodesk::statuschannel STATIC IMPORTED)
    set_target_properties(velodesk::statuschannel PROPERTIES
        IMPORTED_LOCATION ${velodesk_prefix}/lib/@CMAKE_LIBRARY_ARCHITECTURE@/libvelodesk-statuschannel.a
        IMPORTED_LINK_INTERFACE_LANGUAGES CXX
        INTERFACE_COMPILE_FEATURES cxx_std_17
        INTERFACE_INCLUDE_DIRECTORIES ${velodesk_prefix}/include/velodesk
        INTERFACE_LINK_LIBRARIES "Qt5::Core;Qt5::Network;Threads::Threads")
endif()
