# Headers, library, CMake package, pkg-config file and the command-line program.
include(CMakePackageConfigHelpers)

install(TARGETS tvutil2 EXPORT tvutil2Targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development)
if(TARGET tvutil2-crash)
  install(TARGETS tvutil2-crash RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR} COMPONENT library)
endif()
if(TARGET tvutil)
  install(TARGETS tvutil RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT program)
  # What shells complete and the manual page, as the program itself tells them.
  set(told ${PROJECT_BINARY_DIR}/told)
  install(CODE "
    file(MAKE_DIRECTORY \"${told}\")
    foreach(what \"completion bash\" \"completion zsh\" \"completion fish\" manual)
      string(REPLACE \" \" \"_\" name \"\${what}\")
      separate_arguments(what UNIX_COMMAND \"\${what}\")
      execute_process(COMMAND \"$<TARGET_FILE:tvutil>\" \${what} OUTPUT_FILE \"${told}/\${name}\"
                      COMMAND_ERROR_IS_FATAL ANY)
    endforeach()" COMPONENT program)
  install(FILES ${told}/completion_bash RENAME tvutil
          DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT program)
  # Debian's zsh reads the administrator's functions in /usr/local, and those of packages elsewhere.
  set(zsh_functions site-functions)
  if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(zsh_functions vendor-completions)
  endif()
  install(FILES ${told}/completion_zsh RENAME _tvutil
          DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/${zsh_functions} COMPONENT program)
  install(FILES ${told}/completion_fish RENAME tvutil.fish
          DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT program)
  install(FILES ${told}/manual RENAME tvutil.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
endif()

if(IS_ABSOLUTE ${CMAKE_INSTALL_INCLUDEDIR})
  set(headers_folder ${CMAKE_INSTALL_INCLUDEDIR})
else()
  set(headers_folder "\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
install(CODE "set(SOURCE \"${PROJECT_SOURCE_DIR}\")
set(DESTINATION \"${headers_folder}\")
include(\"${PROJECT_SOURCE_DIR}/cmake/install_headers.cmake\")" COMPONENT development)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tvutil2)
install(EXPORT tvutil2Targets NAMESPACE tvutil2:: DESTINATION ${package_dir} COMPONENT development)
configure_package_config_file(cmake/tvutil2Config.cmake.in ${PROJECT_BINARY_DIR}/tvutil2Config.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tvutil2ConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tvutil2Config.cmake
              ${PROJECT_BINARY_DIR}/tvutil2ConfigVersion.cmake
              ${PROJECT_SOURCE_DIR}/cmake/version.cmake DESTINATION ${package_dir}
        COMPONENT development)

# Found from where the file is, so that the whole tree can be moved; absolute where it was asked for so.
set(pc_prefix ${CMAKE_INSTALL_PREFIX})
set(pc_libdir ${CMAKE_INSTALL_LIBDIR})
set(pc_includedir ${CMAKE_INSTALL_INCLUDEDIR})
if(NOT IS_ABSOLUTE ${pc_libdir})
  file(RELATIVE_PATH up ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
  string(REGEX REPLACE "/$" "" up ${up})
  set(pc_prefix "\${pcfiledir}/${up}")
  set(pc_libdir "\${prefix}/${pc_libdir}")
endif()
if(NOT IS_ABSOLUTE ${pc_includedir})
  set(pc_includedir "\${prefix}/${pc_includedir}")
endif()
configure_file(cmake/tvutil2.pc.in ${PROJECT_BINARY_DIR}/tvutil2.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tvutil2.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT development)
