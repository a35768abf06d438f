# Headers, library, program, CMake package and pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS kvutil EXPORT kvutil-targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS kv RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kvutil)
install(EXPORT kvutil-targets NAMESPACE kvutil:: DESTINATION ${package_dir} FILE kvutil-targets.cmake)
configure_package_config_file(cmake/kvutil-config.cmake.in ${PROJECT_BINARY_DIR}/generated/kvutil-config.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/generated/kvutil-config-version.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/generated/kvutil-config.cmake
  ${PROJECT_BINARY_DIR}/generated/kvutil-config-version.cmake DESTINATION ${package_dir})

# The prefix as seen from the folder of the pkg-config file, so that the tree can be moved.
file(RELATIVE_PATH prefix_from_pc ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/kvutil.pc.in ${PROJECT_BINARY_DIR}/generated/kvutil.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/generated/kvutil.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
