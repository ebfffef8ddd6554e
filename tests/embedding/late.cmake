# The libraries that are loaded late: the file's note must name them, and the program must say which one
# it lacks, and what installs it, when one can't be loaded.
#
#   cmake -D LIBRARY=... -D PROGRAM=... -D WORK=... -P late.cmake
# Older ones of binutils fail after a note whose type they don't know, having shown it.
execute_process(COMMAND readelf -Wn ${LIBRARY} OUTPUT_VARIABLE notes)
execute_process(COMMAND readelf -Wp .note.dlopen ${LIBRARY} OUTPUT_VARIABLE texts COMMAND_ERROR_IS_FATAL ANY)
if(NOT notes MATCHES "FDO +0x[0-9a-f]+[^\n]*407c0c0a" OR NOT texts MATCHES "(.{\"feature\".*}.)\n")
  message(FATAL_ERROR "no dlopen note:\n${notes}${texts}")
endif()
set(json "${CMAKE_MATCH_1}")

set(tries protect "decode 1252")
set(features crypto icu-common)
file(REMOVE_RECURSE ${WORK})
foreach(feature try IN ZIP_LISTS features tries)
  string(JSON count LENGTH "${json}")
  set(file "")
  foreach(i RANGE 1 ${count})
    math(EXPR i "${i} - 1")
    string(JSON name GET "${json}" ${i} feature)
    string(JSON priority GET "${json}" ${i} priority)
    if(name STREQUAL feature AND priority STREQUAL "required")
      string(JSON file GET "${json}" ${i} soname 0)
    endif()
  endforeach()
  # In the loader's first folder stands a file of that name that is no library.
  file(WRITE ${WORK}/${feature}/${file} "")
  file(WRITE ${WORK}/input "café")
  separate_arguments(try UNIX_COMMAND "${try}")
  execute_process(COMMAND ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${WORK}/${feature}
                          TVUTIL_PROFILE=${WORK}/profile ${PROGRAM} ${try} INPUT_FILE ${WORK}/input
                  RESULT_VARIABLE code OUTPUT_VARIABLE out ERROR_VARIABLE said)
  if(NOT code EQUAL 127 OR
     NOT said MATCHES "^tvutil: can't load ${file}, which Debian's package lib[a-z]+[0-9]+ installs: [^\n]+\n$")
    message(SEND_ERROR "without ${file}: code ${code}, \"${said}\"")
  endif()
endforeach()
file(REMOVE_RECURSE ${WORK})
