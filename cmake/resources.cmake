# Compiles one resource script to a .res image. The scripts need no preprocessor, so that building
# them needs no second compiler.
find_program(LLVM_RC NAMES llvm-rc llvm-rc-14 REQUIRED)

function(tvutil2_compile_resource script image)
  add_custom_command(
    OUTPUT ${image}
    COMMAND ${LLVM_RC} /no-preprocess /C 65001 /FO ${image} ${script}
    DEPENDS ${script}
    COMMENT "Compiling resources ${script}"
    VERBATIM)
endfunction()
