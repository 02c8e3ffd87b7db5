# What makes an overrun end the program instead of serving an attacker. Debug builds stay as they
# are; scripts/check-hardening looks whether the rest has it. On Windows, where g++ 12 fails over
# some of these options, the linker's own defaults stand.
if(CMAKE_BUILD_TYPE STREQUAL "Debug" OR WIN32)
  return()
endif()
include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported()

foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection)
  string(MAKE_C_IDENTIFIER "ZELTO_HAS${flag}" has_flag)
  check_cxx_compiler_flag(${flag} ${has_flag})
  if(${has_flag})
    target_compile_options(zelto_build_flags INTERFACE ${flag})
  endif()
endforeach()
target_link_options(zelto_build_flags INTERFACE
  LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
# Needs the optimiser, and the sanitizers look closer by themselves.
if(CMAKE_BUILD_TYPE AND NOT ZELTO_SANITIZE)
  target_compile_options(zelto_build_flags INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
endif()
