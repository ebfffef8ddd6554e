# What the library and the program are built with beyond warnings, so that a fault is harder to make use
# of: guarded stacks, checked calls of the C library, tables that nobody writes once a program runs.
function(tvutil2_shipped_target target)
  tvutil2_own_target(${target})
  if(TVUTIL2_SANITIZERS)
    return()
  endif()
  target_compile_options(${target} PRIVATE -fstack-protector-strong -fstack-clash-protection
    "$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
  target_link_options(${target} PRIVATE LINKER:-z,relro,-z,now LINKER:-z,noexecstack LINKER:-z,defs)
endfunction()
