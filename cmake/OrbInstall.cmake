# Installation: the library, its headers, a CMake package, a pkg-config file, and orb where it is built.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS orb90legacy EXPORT orb90legacy
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES LICENSE README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
if(ORB_HOSTS)
  set_target_properties(orb PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  install(TARGETS orb RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

set(package_directory ${CMAKE_INSTALL_LIBDIR}/cmake/orb90legacy)
install(EXPORT orb90legacy NAMESPACE orb90legacy:: DESTINATION ${package_directory}
        FILE orb90legacy-config.cmake)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/orb90legacy-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/orb90legacy-config-version.cmake DESTINATION ${package_directory})

# Where the prefix is said only when installing, the directories are found from the file's own place.
file(RELATIVE_PATH ORB_PREFIX_FROM_PKGCONFIG /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/orb90legacy.pc.in orb90legacy.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/orb90legacy.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
