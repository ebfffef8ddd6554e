# Headers, library, CMake package, pkg-config file and the command-line program.
include(CMakePackageConfigHelpers)

install(TARGETS tvutil2 EXPORT tvutil2Targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(TARGET tvutil)
  install(TARGETS tvutil RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/tvutil2/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tvutil2
        FILES_MATCHING PATTERN "*.h")

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tvutil2)
install(EXPORT tvutil2Targets NAMESPACE tvutil2:: DESTINATION ${package_dir})
configure_package_config_file(cmake/tvutil2Config.cmake.in ${PROJECT_BINARY_DIR}/tvutil2Config.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tvutil2ConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tvutil2Config.cmake
              ${PROJECT_BINARY_DIR}/tvutil2ConfigVersion.cmake
              ${PROJECT_SOURCE_DIR}/cmake/version.cmake DESTINATION ${package_dir})

configure_file(cmake/tvutil2.pc.in ${PROJECT_BINARY_DIR}/tvutil2.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tvutil2.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
