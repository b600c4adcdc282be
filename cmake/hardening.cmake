# What our own code is hardened with. On MIPS two measures are options: a stack protector adds 12 % to the library, and with pages
# of up to 64 KiB to reckon with, a read-only GOT would cost 50 KiB of padding in the file.
set(DEVFACTS_IS_MIPS OFF)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^mips")
  set(DEVFACTS_IS_MIPS ON)
endif()
set(default ON)
if(DEVFACTS_IS_MIPS)
  set(default OFF)
endif()
option(DEVFACTS_STACK_PROTECTOR "Check the stack for overruns (-fstack-protector-strong)" ${default})
option(DEVFACTS_RELRO "Make the GOT read-only after the start; on MIPS for kernels with pages of 4 KiB only" ${default})
option(DEVFACTS_FORTIFY "Use the C library's checked calls (_FORTIFY_SOURCE=2) in optimised builds without sanitizers" ON)

include(CheckCompilerFlag)
include(CheckPIESupported)
check_pie_supported()
check_compiler_flag(CXX -fstack-clash-protection DEVFACTS_HAS_STACK_CLASH_PROTECTION)

# A large frame touches each of its pages, so that none lies beyond the guard page of a small stack.
set(DEVFACTS_HARDENING_COMPILE $<$<BOOL:${DEVFACTS_HAS_STACK_CLASH_PROTECTION}>:-fstack-clash-protection>)
if(DEVFACTS_STACK_PROTECTOR)
  list(APPEND DEVFACTS_HARDENING_COMPILE -fstack-protector-strong)
endif()
# The sanitizers look closer than the checked calls do, and know the plain ones.
if(DEVFACTS_FORTIFY AND NOT DEVFACTS_SANITIZE)
  set(optimised $<CONFIG:Release,MinSizeRel,RelWithDebInfo>)
  list(APPEND DEVFACTS_HARDENING_COMPILE $<${optimised}:-U_FORTIFY_SOURCE> $<${optimised}:-D_FORTIFY_SOURCE=2>)
endif()

# For every program that links the library, too: start files of the C library may ask for an executable stack.
set(DEVFACTS_HARDENING_PROGRAMS -Wl,-z,noexecstack)
set(DEVFACTS_HARDENING_LINK ${DEVFACTS_HARDENING_PROGRAMS})
if(DEVFACTS_RELRO)
  list(APPEND DEVFACTS_HARDENING_LINK -Wl,-z,relro,-z,now)
else()
  list(APPEND DEVFACTS_HARDENING_LINK -Wl,-z,norelro)
endif()
if(DEVFACTS_IS_MIPS AND DEVFACTS_RELRO)
  list(APPEND DEVFACTS_HARDENING_LINK -Wl,-z,max-page-size=4096,-z,common-page-size=4096)
elseif(DEVFACTS_IS_MIPS)
  # Data follows code in the file without padding, which would save a page of memory at times, and cost up to one of flash.
  list(APPEND DEVFACTS_HARDENING_LINK -Wl,-z,common-page-size=65536)
endif()
