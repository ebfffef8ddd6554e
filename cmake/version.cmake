# tvutil_add_version(TARGET VERSION): gives an executable or a module a version note, which
# TvGetFileVersion and GetFileVersionInfoW read. VERSION is one to four numbers up to 65535, with dots
# between them; missing ones are 0.
#
#     tvutil_add_version(Pelrin 8.0.0.61)
function(tvutil_add_version target version)
  if(NOT version MATCHES "^[0-9]+(\\.[0-9]+)?(\\.[0-9]+)?(\\.[0-9]+)?$")
    message(FATAL_ERROR "tvutil_add_version: \"${version}\" isn't one to four numbers")
  endif()
  string(REPLACE "." ";" numbers ${version})
  foreach(number IN LISTS numbers)
    if(number GREATER 65535)
      message(FATAL_ERROR "tvutil_add_version: ${number} in ${version} is above 65535")
    endif()
  endforeach()
  list(APPEND numbers 0 0 0)
  list(SUBLIST numbers 0 4 numbers)
  string(JOIN ", " numbers ${numbers})
  # A note (ELF, "Note Section"): sizes of owner and content, type, owner, content. The assembler
  # inside a source needs no further language of the project.
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${target}_version.cpp)
  file(CONFIGURE OUTPUT ${source} @ONLY CONTENT [[
__asm__(
    ".pushsection .note.tvutil2.version, \"a\", %note\n"
    ".balign 4\n"
    ".long 8, 8, 1\n"
    ".asciz \"tvutil2\"\n"
    ".short @numbers@\n"
    ".popsection\n");
]])
  target_sources(${target} PRIVATE ${source})
endfunction()
