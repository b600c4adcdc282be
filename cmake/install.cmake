include(CMakePackageConfigHelpers)

# Three components, and a package for each: runtime is what programs need to run, tool the command, development the rest.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)
set(DEVFACTS_RUNTIME_PACKAGE libdevfacts${PROJECT_VERSION_MAJOR})
set(DEVFACTS_TOOL_PACKAGE devfacts)
set(DEVFACTS_DEVELOPMENT_PACKAGE devfacts-dev)
foreach(component runtime tool development)
  string(TOUPPER ${component} name)
  install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${DEVFACTS_${name}_PACKAGE} RENAME copyright COMPONENT ${component})
endforeach()

install(TARGETS devfacts devfacts_static ${PLATFORM_TARGETS} EXPORT devfacts
        LIBRARY COMPONENT runtime NAMELINK_COMPONENT development)

install(TARGETS devfacts-tool COMPONENT tool)
install(FILES docs/devfacts.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
install(FILES tools/completion.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME devfacts COMPONENT tool)

install(DIRECTORY include/devfacts DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
# With the device's own libraries these come with the firmware.
install(FILES ${PLATFORM_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/devfacts/platform)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/devfacts)
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

set(documents ${CMAKE_INSTALL_DATADIR}/doc/${DEVFACTS_DEVELOPMENT_PACKAGE})
install(FILES README.md CHANGELOG.md DESTINATION ${documents})
install(DIRECTORY docs DESTINATION ${documents} FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "*.png")
install(DIRECTORY examples DESTINATION ${documents} USE_SOURCE_PERMISSIONS)
if(DEVFACTS_DOCS)
  install(DIRECTORY ${DEVFACTS_REFERENCE}/pages/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man3)
  install(DIRECTORY ${DEVFACTS_REFERENCE}/html DESTINATION ${documents})
endif()
