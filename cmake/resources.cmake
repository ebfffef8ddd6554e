# Compiles one resource script to a .res image. The scripts need no preprocessor, so that building
# them needs no second compiler. The compiler runs in the script's folder and is given its bare name:
# it would read an absolute path such as "/check/a.rc" as its option "/C".
find_program(LLVM_RC NAMES llvm-rc llvm-rc-14 REQUIRED)

function(tvutil2_compile_resource script image)
  get_filename_component(folder ${script} DIRECTORY)
  get_filename_component(name ${script} NAME)
  add_custom_command(
    OUTPUT ${image}
    COMMAND ${LLVM_RC} /no-preprocess /C 65001 /FO ${image} ${name}
    WORKING_DIRECTORY ${folder}
    DEPENDS ${script}
    COMMENT "Compiling resources ${script}"
    VERBATIM)
endfunction()
