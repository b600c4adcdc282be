include(CMakePackageConfigHelpers)

# What a device needs to run programs is the component runtime; the rest is for building them.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/devfacts)
install(TARGETS devfacts devfacts_static ${PLATFORM_TARGETS} EXPORT devfacts
        LIBRARY COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS devfacts-tool COMPONENT runtime)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} RENAME copyright COMPONENT runtime)
install(DIRECTORY include/devfacts DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(DIRECTORY examples/ DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples
        FILES_MATCHING PATTERN "*.[ch]" PATTERN device EXCLUDE PATTERN page EXCLUDE)
install(EXPORT devfacts NAMESPACE devfacts:: FILE devfactsTargets.cmake DESTINATION ${package_dir})

configure_package_config_file(cmake/devfactsConfig.cmake.in devfactsConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(devfactsConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/devfactsConfig.cmake ${PROJECT_BINARY_DIR}/devfactsConfigVersion.cmake
        DESTINATION ${package_dir})

# The .pc file finds its prefix from its own place, so that an installed tree can be moved.
file(RELATIVE_PATH DEVFACTS_PREFIX_FROM_PC ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" DEVFACTS_PREFIX_FROM_PC "${DEVFACTS_PREFIX_FROM_PC}")
configure_file(cmake/devfacts.pc.in devfacts.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/devfacts.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
