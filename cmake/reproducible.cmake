# The same sources give the same bytes wherever they are built: no path of this machine in a library or program, and none of
# its users and times in an archive. A debugger finds the sources of a Debug build by their paths, so these keep them.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
add_compile_options("$<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>"
                    "$<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${PROJECT_BINARY_DIR}=build>")
set(CMAKE_C_ARCHIVE_CREATE "<CMAKE_AR> qcD <TARGET> <LINK_FLAGS> <OBJECTS>")
set(CMAKE_C_ARCHIVE_FINISH "<CMAKE_RANLIB> -D <TARGET>")
