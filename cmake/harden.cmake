# zelvane_hardened: protection against exploits of memory errors. Sanitizers have their own checks.
include(CheckCXXCompilerFlag)

add_library(zelvane_hardened INTERFACE)
if(ZELVANE_HARDEN AND NOT ZELVANE_SANITIZE)
  foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection)
    string(MAKE_C_IDENTIFIER ZELVANE_HAS${flag} accepted)
    check_cxx_compiler_flag(${flag} ${accepted})
    if(${accepted})
      target_compile_options(zelvane_hardened INTERFACE ${flag})
    endif()
  endforeach()
  # The C library's checks require optimisation. A compiler may already define the macro.
  target_compile_options(zelvane_hardened INTERFACE
    "$<$<NOT:$<CONFIG:Debug>>:SHELL:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>")
  target_link_options(zelvane_hardened INTERFACE -Wl,-z,relro,-z,now)
endif()
