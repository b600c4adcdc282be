# A copy of a library whose calls of the functions named go to test_NAME instead, and nobody else's do.
function(redefined_copy copy library)
  list(TRANSFORM ARGN REPLACE "(.+)" "--redefine-sym=\\1=test_\\1" OUTPUT_VARIABLE redefined)
  add_custom_command(OUTPUT ${copy} DEPENDS ${library} VERBATIM
    COMMAND ${CMAKE_OBJCOPY} ${redefined} $<TARGET_FILE:${library}> ${copy})
endfunction()
