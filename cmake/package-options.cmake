# Read by cpack before it makes a package: what only the finished build can tell.
if(NOT CPACK_DEVFACTS_DOCS)
  message(FATAL_ERROR "The packages hold the manual: configure with -DDEVFACTS_DOCS=ON, which needs Doxygen and Python 3.")
endif()

# Times in packages are those of the commit, without one those of the changelog.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  get_filename_component(source ${CMAKE_CURRENT_LIST_DIR} DIRECTORY)
  execute_process(COMMAND git -C ${source} log -1 --format=%ct OUTPUT_VARIABLE time OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  if(NOT time)
    file(TIMESTAMP ${source}/CHANGELOG.md time "%s" UTC)
  endif()
  set(ENV{SOURCE_DATE_EPOCH} ${time})
endif()

# The C library must be as new as the newest of its symbols that is asked for.
file(GLOB binaries ${CPACK_DEVFACTS_BUILD}/libdevfacts*.so ${CPACK_DEVFACTS_BUILD}/tools/devfacts)
execute_process(COMMAND ${CPACK_DEVFACTS_READELF} --version-info ${binaries} OUTPUT_VARIABLE versions COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "GLIBC_[0-9.]+" versions "${versions}")
list(SORT versions COMPARE NATURAL ORDER DESCENDING)
list(GET versions 0 depends)
string(REPLACE "GLIBC_" "libc6 (>= " depends "${depends})")
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${CPACK_PACKAGE_VERSION}), ${depends}")
list(APPEND depends ${CPACK_DEVFACTS_DEPENDS})
list(JOIN depends ", " CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS)
