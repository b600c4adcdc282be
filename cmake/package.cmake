# Debian packages, by `cpack` or the target `package`: libdevfacts0 is what programs need to run (the shared libraries), devfacts the
# command, devfacts-dev what a program is built with. Of libdevfacts0 and devfacts-dev those of several architectures can be installed.
set(DEVFACTS_PACKAGE_DEPENDS "" CACHE STRING
    "Packages that the Debian package of the libraries depends on, beside the C library (those of the device's own libraries)")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME devfacts)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_COMPONENTS_ALL runtime tool development)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                                WORLD_READ WORLD_EXECUTE)
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/package-options.cmake)
set(CPACK_DEVFACTS_READELF ${CMAKE_READELF})
set(CPACK_DEVFACTS_BUILD ${PROJECT_BINARY_DIR})
set(CPACK_DEVFACTS_DEPENDS ${DEVFACTS_PACKAGE_DEPENDS})
set(CPACK_DEVFACTS_DOCS ${DEVFACTS_DOCS})

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The devfacts project <maintainer@devfacts.invalid>")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
if(CMAKE_CROSSCOMPILING)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${CMAKE_SYSTEM_PROCESSOR})
endif()

# CPack before 3.31 has no word for the field Multi-Arch: it is a second line of the one above it.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${DEVFACTS_RUNTIME_PACKAGE})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION "libs\nMulti-Arch: same")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "${PROJECT_DESCRIPTION} (shared libraries)
Network interfaces, wireless and Ethernet status, product data and capabilities
of one small device: the shared libraries.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME ${DEVFACTS_TOOL_PACKAGE})
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION "utils\nMulti-Arch: foreign")
set(CPACK_DEBIAN_TOOL_DESCRIPTION "${PROJECT_DESCRIPTION} (command)
The command that prints what the library devfacts knows.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${DEVFACTS_DEVELOPMENT_PACKAGE})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION "libdevel\nMulti-Arch: same")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${DEVFACTS_RUNTIME_PACKAGE} (= ${PROJECT_VERSION}), libc6-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "${PROJECT_DESCRIPTION} (development files)
The public headers of devfacts, its archives, what pkg-config and CMake need to
find it, the manual of its functions, its documents, and example programs.")

# For the packages of programs that are linked against these libraries, and for the dynamic linker's cache.
set(control ${PROJECT_BINARY_DIR}/control)
set(shlibs "libdevfacts ${PROJECT_VERSION_MAJOR} ${DEVFACTS_RUNTIME_PACKAGE} (>= ${PROJECT_VERSION})\n")
if(TARGET devfacts_platform)
  string(APPEND shlibs "libdevfacts-platform ${PROJECT_VERSION_MAJOR} ${DEVFACTS_RUNTIME_PACKAGE} (>= ${PROJECT_VERSION})\n")
endif()
file(WRITE ${control}/shlibs "${shlibs}")
file(WRITE ${control}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${control}/shlibs ${control}/triggers)

include(CPack)
