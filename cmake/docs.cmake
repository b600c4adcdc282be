# The reference of the public headers: HTML by Doxygen, and manual pages that cmake/manual/pages.py makes of Doxygen's XML. Libraries and
# tool are built without it, packages are not.
find_package(Doxygen QUIET)
find_package(Python3 QUIET COMPONENTS Interpreter)
set(DEVFACTS_DOCS_POSSIBLE OFF)
if(DOXYGEN_FOUND AND Python3_FOUND)
  set(DEVFACTS_DOCS_POSSIBLE ON)
endif()
option(DEVFACTS_DOCS "Make the reference of the public headers (needs Doxygen and Python 3)" ${DEVFACTS_DOCS_POSSIBLE})

if(DEVFACTS_DOCS)
  find_package(Doxygen REQUIRED)
  find_package(Python3 REQUIRED COMPONENTS Interpreter)
  set(DEVFACTS_REFERENCE ${PROJECT_BINARY_DIR}/docs)
  set(DEVFACTS_DOXYGEN_WARNINGS NO)
  if(CMAKE_COMPILE_WARNING_AS_ERROR)
    set(DEVFACTS_DOXYGEN_WARNINGS FAIL_ON_WARNINGS)
  endif()
  file(GLOB documents CONFIGURE_DEPENDS docs/*.md)
  file(GLOB scripts CONFIGURE_DEPENDS cmake/manual/*.py)
  set(input ${PROJECT_SOURCE_DIR}/docs/mainpage.dox ${DEVFACTS_HEADERS} ${PLATFORM_HEADERS} ${documents})
  list(TRANSFORM input REPLACE "(.+)" "\"\\1\"" OUTPUT_VARIABLE DEVFACTS_DOXYGEN_INPUT)
  list(JOIN DEVFACTS_DOXYGEN_INPUT " " DEVFACTS_DOXYGEN_INPUT)
  configure_file(docs/Doxyfile.in ${DEVFACTS_REFERENCE}/Doxyfile @ONLY)
  add_custom_command(OUTPUT ${DEVFACTS_REFERENCE}/made VERBATIM
    DEPENDS ${input} ${scripts} docs/Doxyfile.in
    COMMAND ${CMAKE_COMMAND} -E rm -rf html xml pages WORKING_DIRECTORY ${DEVFACTS_REFERENCE}
    COMMAND Doxygen::doxygen Doxyfile
    COMMAND Python3::Interpreter -B ${PROJECT_SOURCE_DIR}/cmake/manual/pages.py xml pages ${PROJECT_VERSION}
    COMMAND ${CMAKE_COMMAND} -E touch made
    COMMENT "Making the reference")
  add_custom_target(devfacts-docs ALL DEPENDS ${DEVFACTS_REFERENCE}/made)
endif()
