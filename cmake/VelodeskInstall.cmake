# cmake --install installs only the program. The options --component icons and --component dev install the others.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

# The daemon starts the program from this path, independently of the prefix.
install(TARGETS Velodesk DESTINATION /opt/apps/com.zelmora.velodesk/files/bin COMPONENT program)

# Replaces the placeholder in the SVG master of the logo.
set(art ${PROJECT_SOURCE_DIR}/src/resources/art)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${art}/logo.svg ${art}/parts/mark.svg)
file(READ ${art}/logo.svg icon)
file(READ ${art}/parts/mark.svg mark)
string(REPLACE "{part:mark}" "${mark}" icon "${icon}")
file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/com.zelmora.velodesk.svg CONTENT "${icon}")
set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor)
install(FILES ${PROJECT_BINARY_DIR}/com.zelmora.velodesk.svg DESTINATION ${icons}/scalable/apps
    COMPONENT icons EXCLUDE_FROM_ALL)
install(FILES ${PROJECT_SOURCE_DIR}/src/resources/pictures/smallLogo.png RENAME com.zelmora.velodesk.png
    DESTINATION ${icons}/64x64/apps COMPONENT icons EXCLUDE_FROM_ALL)

# The client library with its headers, for CMake and for pkg-config.
set(headers ${CMAKE_INSTALL_INCLUDEDIR}/velodesk)
foreach(header platform/Logger.h platform/Singleton.h statuschannel/AppMessage.h statuschannel/ConnClient.h)
    get_filename_component(folder ${header} DIRECTORY)
    install(FILES ${PROJECT_SOURCE_DIR}/src/${header} DESTINATION ${headers}/${folder} COMPONENT dev EXCLUDE_FROM_ALL)
endforeach()
set(config ${CMAKE_INSTALL_LIBDIR}/cmake/velodesk)
install(TARGETS velodesk_client EXPORT velodesk DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT dev EXCLUDE_FROM_ALL INCLUDES DESTINATION ${headers})
install(EXPORT velodesk NAMESPACE velodesk:: FILE velodeskTargets.cmake DESTINATION ${config}
    COMPONENT dev EXCLUDE_FROM_ALL)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/velodeskConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES cmake/velodeskConfig.cmake ${PROJECT_BINARY_DIR}/velodeskConfigVersion.cmake DESTINATION ${config}
    COMPONENT dev EXCLUDE_FROM_ALL)
configure_file(cmake/velodesk-statuschannel.pc.in velodesk-statuschannel.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/velodesk-statuschannel.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT dev EXCLUDE_FROM_ALL)
