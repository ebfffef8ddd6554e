# tvutil2_sign_product(TARGET...): signs executables of the build tree, with a maker's certificate that
# each build folder makes for itself. It is nobody's but that folder's, and its key never leaves it.
set(tvutil2_maker_folder ${PROJECT_BINARY_DIR}/maker)

function(tvutil2_sign_product target)
  if(NOT TARGET tvutil)
    return()
  endif()
  if(NOT TARGET throw_away_maker)
    find_program(OPENSSL_PROGRAM openssl REQUIRED)
    set(script ${PROJECT_SOURCE_DIR}/examples/products/make_maker.sh)
    add_custom_command(OUTPUT ${tvutil2_maker_folder}/maker.pem ${tvutil2_maker_folder}/maker.key
                              ${tvutil2_maker_folder}/root.pem
                       COMMAND ${script} ${tvutil2_maker_folder} DEPENDS ${script}
                       COMMENT "Making a throw-away maker's certificate" VERBATIM)
    add_custom_target(throw_away_maker DEPENDS ${tvutil2_maker_folder}/maker.pem)
  endif()
  add_dependencies(${target} tvutil throw_away_maker)
  add_custom_command(TARGET ${target} POST_BUILD
                     COMMAND tvutil sign $<TARGET_FILE:${target}> --key ${tvutil2_maker_folder}/maker.key
                             --certificates ${tvutil2_maker_folder}/maker.pem VERBATIM)
endfunction()
