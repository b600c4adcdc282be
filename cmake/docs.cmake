# The reference that Doxygen makes of the public headers, HTML and manual pages, and the tool's manual page.
find_package(Doxygen QUIET)
option(DEVFACTS_DOCS "Make the reference of the public headers (needs Doxygen)" ${DOXYGEN_FOUND})
install(FILES docs/devfacts.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT runtime)

if(DEVFACTS_DOCS)
  find_package(Doxygen REQUIRED)
  set(DEVFACTS_REFERENCE ${PROJECT_BINARY_DIR}/docs)
  set(DEVFACTS_DOXYGEN_WARNINGS NO)
  if(CMAKE_COMPILE_WARNING_AS_ERROR)
    set(DEVFACTS_DOXYGEN_WARNINGS FAIL_ON_WARNINGS)
  endif()
  configure_file(docs/Doxyfile.in ${DEVFACTS_REFERENCE}/Doxyfile @ONLY)
  add_custom_command(OUTPUT ${DEVFACTS_REFERENCE}/made VERBATIM
    DEPENDS ${DEVFACTS_HEADERS} docs/Doxyfile.in cmake/manual.cmake
    COMMAND ${CMAKE_COMMAND} -E rm -rf html man pages WORKING_DIRECTORY ${DEVFACTS_REFERENCE}
    COMMAND Doxygen::doxygen Doxyfile
    COMMAND ${CMAKE_COMMAND} -DEXPORTS=${PROJECT_BINARY_DIR}/exports.map -P ${PROJECT_SOURCE_DIR}/cmake/manual.cmake
    COMMAND ${CMAKE_COMMAND} -E touch made
    COMMENT "Making the reference")
  add_custom_target(devfacts-docs ALL DEPENDS ${DEVFACTS_REFERENCE}/made)
  install(DIRECTORY ${DEVFACTS_REFERENCE}/pages/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man3)
  install(DIRECTORY ${DEVFACTS_REFERENCE}/html DESTINATION ${CMAKE_INSTALL_DOCDIR})
endif()
