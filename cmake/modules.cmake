# A module of the library's own: what only some programs need stands there, with the libraries that it is
# built on, and is loaded when it is first asked for (platform/process/own_module.h). It lies in the folder
# "tvutil2" beside the library, in the build tree as where it is installed.
#
#   tvutil2_own_module(net SOURCES... LIBRARIES...)
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  set(tvutil2_modules_folder ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/tvutil2)
else()
  set(tvutil2_modules_folder ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_LIBDIR}/tvutil2)
endif()

function(tvutil2_own_module name)
  cmake_parse_arguments(PARSE_ARGV 1 module "" "" "SOURCES;LIBRARIES")
  set(target tvutil2_${name})
  add_library(${target} MODULE ${module_SOURCES})
  tvutil2_shipped_target(${target})
  tvutil2_build_by_folder(${target})
  set_target_properties(${target} PROPERTIES PREFIX "" OUTPUT_NAME tvutil2-${name}
                                             LIBRARY_OUTPUT_DIRECTORY ${tvutil2_modules_folder})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
  target_compile_definitions(${target} PRIVATE TVUTIL2_BUILDING)
  target_link_libraries(${target} PRIVATE ${module_LIBRARIES})
  # Who has the library has its modules.
  add_dependencies(tvutil2 ${target})
  install(TARGETS ${target} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/tvutil2 COMPONENT library)
endfunction()
