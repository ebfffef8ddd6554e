# Takes the library's sources into another project and compiles that one's program against them. The
# library isn't built a second time.
#
#   cmake -D SOURCE=... -D WORK=... -D COMPILER=... -P embedded.cmake
file(REMOVE_RECURSE ${WORK})
execute_process(COMMAND ${CMAKE_COMMAND} -G Ninja -S ${CMAKE_CURRENT_LIST_DIR}/embedded -B ${WORK}
                        -D TVUTIL2_SOURCE=${SOURCE} -D CMAKE_CXX_COMPILER=${COMPILER}
                COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
execute_process(COMMAND ninja -C ${WORK} -t commands consumer
                OUTPUT_VARIABLE commands COMMAND_ERROR_IS_FATAL ANY)
if(NOT commands MATCHES "libtvutil2[.]so" OR commands MATCHES "tools/tvutil|gtest")
  message(FATAL_ERROR "the program's build is:\n${commands}")
endif()
execute_process(COMMAND ninja -C ${WORK} -t targets all OUTPUT_VARIABLE targets COMMAND_ERROR_IS_FATAL ANY)
if(NOT targets MATCHES "(CMakeFiles/consumer[.]dir/[^:\n]*[.]o):")
  message(FATAL_ERROR "the program has no object:\n${targets}")
endif()
execute_process(COMMAND ninja -C ${WORK} ${CMAKE_MATCH_1} RESULT_VARIABLE result OUTPUT_VARIABLE output)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${output}")
endif()
file(REMOVE_RECURSE ${WORK})
