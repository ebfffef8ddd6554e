# Installs the built tree below a throw-away prefix, and builds and runs a program against that alone:
# once with find_package, once with pkg-config. Then each header that no source of its own includes first
# is compiled alone.
#
#   cmake -D BUILD=... -D SOURCE=... -D WORK=... -D COMPILER=... -P check.cmake
set(prefix ${WORK}/prefix)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    string(JOIN " " command ${ARGN})
    message(FATAL_ERROR "${command}\n${output}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})
run(${prefix}/bin/tvutil --version)

run(${CMAKE_COMMAND} -G Ninja -S ${SOURCE}/consumer -B ${WORK}/consumer
    -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK}/consumer)
run(${WORK}/consumer/consumer)

file(GLOB_RECURSE package ${prefix}/*/tvutil2.pc)
get_filename_component(package_folder ${package} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${package_folder})
execute_process(COMMAND pkg-config --cflags --libs tvutil2 OUTPUT_VARIABLE flags
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${COMPILER} ${SOURCE}/consumer/consumer.cpp ${flags} -o ${WORK}/by_pkg_config)
get_filename_component(library_folder ${package_folder} DIRECTORY)
set(ENV{LD_LIBRARY_PATH} ${library_folder})
run(${WORK}/by_pkg_config)

file(GLOB_RECURSE headers RELATIVE ${prefix}/include ${prefix}/include/tvutil2/*.h)
foreach(header ${headers})
  string(REGEX REPLACE "[.]h$" ".cpp" own_source ${SOURCE}/../../${header})
  if(EXISTS ${own_source})
    continue()
  endif()
  string(MAKE_C_IDENTIFIER ${header} name)
  file(WRITE ${WORK}/headers/${name}.cpp "#include <${header}>\n")
endforeach()
run(sh -c "printf '%s\\0' ${WORK}/headers/*.cpp | \
xargs -0 -n 4 -P 2 ${COMPILER} -std=c++20 -Wall -Wextra -Werror -I${prefix}/include -fsyntax-only")
file(REMOVE_RECURSE ${WORK})
