# Compiles one resource script of the library to a .res image.
find_program(LLVM_RC NAMES llvm-rc llvm-rc-14 REQUIRED)

function(tvutil2_compile_resource script image)
  add_custom_command(
    OUTPUT ${image}
    COMMAND ${LLVM_RC} /C 65001 /FO ${image} ${script}
    DEPENDS ${script}
    COMMENT "Compiling resources ${script}"
    VERBATIM)
endfunction()
