# Where things are installed. On Debian the libraries have a folder for each architecture, so that those of two architectures can be
# installed side by side.
if(CMAKE_LIBRARY_ARCHITECTURE)
  set(CMAKE_INSTALL_LIBDIR lib/${CMAKE_LIBRARY_ARCHITECTURE} CACHE PATH "Where the libraries are installed")
endif()
include(GNUInstallDirs)
