# A copy of a library whose calls of the functions named go to test_NAME instead, and nobody else's do. A call that the compiler made
# into the C library's checked form has to have its own stand-in, test___NAME_chk: without one the program does not link.
function(redefined_copy copy library)
  list(TRANSFORM ARGN REPLACE "(.+)"
    "--redefine-sym=\\1=test_\\1;--redefine-sym=__\\1_chk=test___\\1_chk;--redefine-sym=__\\1_2=test___\\1_2"
    OUTPUT_VARIABLE redefined)
  add_custom_command(OUTPUT ${copy} DEPENDS ${library} VERBATIM
    COMMAND ${CMAKE_OBJCOPY} ${redefined} $<TARGET_FILE:${library}> ${copy})
endfunction()
