# Installs the built tree below a throw-away prefix, and builds and runs a program against that alone:
# once with find_package, once with pkg-config. Then each header that no source of its own includes first
# is compiled alone, and tvutil2.h is held against what the library's and the framework's rooms export.
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
  set(printed ${output} PARENT_SCOPE)
endfunction()

# The program must have worked, and said what it is there to say.
function(run_consumer program)
  run(${program})
  if(NOT printed STREQUAL "Pelrin\n")
    message(FATAL_ERROR "${program} printed: ${printed}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})
run(${prefix}/bin/tvutil --version)
foreach(file bash-completion/completions/tvutil zsh/site-functions/_tvutil
        fish/vendor_completions.d/tvutil.fish man/man1/tvutil.1)
  file(STRINGS ${prefix}/share/${file} lines REGEX convert LIMIT_COUNT 1)
  if(NOT lines)
    message(FATAL_ERROR "${file} doesn't tell the commands")
  endif()
endforeach()

run(${CMAKE_COMMAND} -G Ninja -S ${SOURCE}/consumer -B ${WORK}/consumer
    -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK}/consumer)
run_consumer(${WORK}/consumer/consumer)
run(${prefix}/bin/tvutil file-version ${WORK}/consumer/consumer)
if(NOT printed STREQUAL "1.2.3.0\n")
  message(FATAL_ERROR "the consumer's version is ${printed}")
endif()

file(GLOB_RECURSE package ${prefix}/*/tvutil2.pc)
get_filename_component(package_folder ${package} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${package_folder})
execute_process(COMMAND pkg-config --cflags --libs tvutil2 OUTPUT_VARIABLE flags
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(${COMPILER} ${SOURCE}/consumer/consumer.cpp ${flags} -o ${WORK}/by_pkg_config)
get_filename_component(library_folder ${package_folder} DIRECTORY)
set(ENV{LD_LIBRARY_PATH} ${library_folder})
run_consumer(${WORK}/by_pkg_config)

file(GLOB_RECURSE headers RELATIVE ${prefix}/include ${prefix}/include/tvutil2/*.h)
run(${COMPILER} -std=c++20 -I${prefix}/include -MM ${SOURCE}/consumer/consumer.cpp)
file(READ ${prefix}/include/tvutil2/tvutil2.h offer)
foreach(header ${headers})
  file(STRINGS ${prefix}/include/${header} exports REGEX TVUTIL_API LIMIT_COUNT 1)
  string(FIND "${printed} ${offer}" ${header} place)
  if(exports AND place EQUAL -1 AND NOT header MATCHES "^tvutil2/platform/")
    message(FATAL_ERROR "tvutil2.h neither includes ${header} nor says why not")
  endif()
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
