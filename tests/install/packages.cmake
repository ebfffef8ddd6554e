# Makes the Debian packages of the built tree, holds them to what they must depend on, and runs the
# program out of a throw-away root.
#
#   cmake -D BUILD=... -D WORK=... -P packages.cmake
file(REMOVE_RECURSE ${WORK})
execute_process(COMMAND ${CMAKE_CPACK_COMMAND} --config ${BUILD}/CPackConfig.cmake -B ${WORK}
                OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${output}")
endif()
# A package; what it depends on; a file of it.
set(packages
  "libtvutil2-8|libsqlite3-0 |/libtvutil2[.]so[.]8"
  "libtvutil2-8|libssl[0-9]|/libtvutil2[.]so[.]8[.]"
  "libtvutil2-8|libglib2[.]0.*libxml2|/tvutil2/tvutil2-notify[.]so"
  "libtvutil2-8|libicu[0-9]|/libtvutil2[.]so[.]8[.]"
  "libtvutil2-dev|libtvutil2-8 [(]= |/tvutil2/tvutil2[.]h"
  "libtvutil2-dev|libtvutil2-8 [(]= |/libtvutil2[.]so"
  "libtvutil2-dev|libtvutil2-8 [(]= |/pkgconfig/tvutil2[.]pc"
  "tvutil|libstdc|/usr/bin/tvutil"
  "tvutil|libtvutil2-8 [(]= |/man1/tvutil[.]1")
foreach(row IN LISTS packages)
  string(REPLACE "|" ";" row "${row}")
  list(GET row 0 package)
  list(GET row 1 depends)
  list(GET row 2 file)
  file(GLOB archive ${WORK}/${package}_*.deb)
  execute_process(COMMAND dpkg-deb -f ${archive} Depends OUTPUT_VARIABLE found COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND dpkg-deb -c ${archive} OUTPUT_VARIABLE listed COMMAND_ERROR_IS_FATAL ANY)
  if(NOT found MATCHES "${depends}" OR NOT listed MATCHES "${file}")
    message(SEND_ERROR "${package} depends on ${found} and holds\n${listed}")
  endif()
  execute_process(COMMAND dpkg-deb -x ${archive} ${WORK}/root COMMAND_ERROR_IS_FATAL ANY)
endforeach()
execute_process(COMMAND ${WORK}/root/usr/bin/tvutil --version COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE_RECURSE ${WORK})
