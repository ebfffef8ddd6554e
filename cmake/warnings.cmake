# What every target of ours is compiled with; never handed on to those who use the library.
function(tvutil2_own_target target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wconversion -Wshadow)
  if(TVUTIL2_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(TVUTIL2_SANITIZERS)
    target_compile_options(${target} PRIVATE -fsanitize=${TVUTIL2_SANITIZERS} -fno-omit-frame-pointer
                                             -fno-sanitize-recover=all)
    # "fuzzer-no-link" instruments; the engine itself is linked by the fuzz targets alone.
    string(REPLACE "fuzzer-no-link," "" runtime "${TVUTIL2_SANITIZERS}")
    target_link_options(${target} PRIVATE -fsanitize=${runtime})
  endif()
endfunction()
