# Debian packages, by `cpack` or the target `package`: devfacts is what a device needs (the shared libraries, the tool, its
# manual), devfacts-dev what a program is built with.
set(DEVFACTS_PACKAGE_DEPENDS "" CACHE STRING
    "Packages that the Debian package devfacts depends on, beside the C library (those of the device's own libraries)")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME devfacts)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                                WORLD_READ WORLD_EXECUTE)
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/package-options.cmake)
set(CPACK_DEVFACTS_READELF ${CMAKE_READELF})
set(CPACK_DEVFACTS_BUILD ${PROJECT_BINARY_DIR})
set(CPACK_DEVFACTS_DEPENDS ${DEVFACTS_PACKAGE_DEPENDS})

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The devfacts project <maintainer@devfacts.invalid>")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
if(CMAKE_CROSSCOMPILING)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${CMAKE_SYSTEM_PROCESSOR})
endif()

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME devfacts)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "${PROJECT_DESCRIPTION}
Network interfaces, wireless and Ethernet status, product data and capabilities
of one small device: the shared library, and the command that prints what the
library knows.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME devfacts-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "devfacts (= ${PROJECT_VERSION}), libc6-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "${PROJECT_DESCRIPTION} (development files)
The public headers of devfacts, its archives, what pkg-config and CMake need to
find it, and the manual of its functions.")

# For the packages of programs that are linked against these libraries, and for the dynamic linker's cache.
set(control ${PROJECT_BINARY_DIR}/control)
set(shlibs "libdevfacts ${PROJECT_VERSION_MAJOR} devfacts (>= ${PROJECT_VERSION})\n")
if(TARGET devfacts_platform)
  string(APPEND shlibs "libdevfacts-platform ${PROJECT_VERSION_MAJOR} devfacts (>= ${PROJECT_VERSION})\n")
endif()
file(WRITE ${control}/shlibs "${shlibs}")
file(WRITE ${control}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${control}/shlibs ${control}/triggers)

include(CPack)
