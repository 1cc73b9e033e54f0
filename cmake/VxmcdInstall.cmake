# SPDX-License-Identifier: MIT
# What is installed besides the programs and libraries themselves, so that others find and use them below any prefix, also
# one that was moved: nothing here names an absolute path.
include(CMakePackageConfigHelpers)

# CMake: find_package(vxmcd), target vxmcd::vxmcd.
set(config_directory ${CMAKE_INSTALL_LIBDIR}/cmake/vxmcd)
install(EXPORT vxmcdTargets NAMESPACE vxmcd:: DESTINATION ${config_directory} COMPONENT development)
configure_package_config_file(cmake/vxmcdConfig.cmake.in ${PROJECT_BINARY_DIR}/vxmcdConfig.cmake
  INSTALL_DESTINATION ${config_directory})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vxmcdConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vxmcdConfig.cmake ${PROJECT_BINARY_DIR}/vxmcdConfigVersion.cmake
  DESTINATION ${config_directory} COMPONENT development)

# pkg-config. The prefix is found from the place of the file.
file(RELATIVE_PATH prefix_from_pkgconfig /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/vxmcd.pc.in ${PROJECT_BINARY_DIR}/vxmcd.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vxmcd.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# Pages to read, in folders as here, so that their links work.
install(FILES docs/man/vxmcd.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
install(FILES docs/man/vxmcd.3 DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 COMPONENT development)
install(FILES README.md CONTRIBUTING.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development FILES_MATCHING PATTERN "*.md"
  PATTERN "*.png" PATTERN man EXCLUDE)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development USE_SOURCE_PERMISSIONS
  PATTERN CMakeLists.txt EXCLUDE PATTERN "__pycache__" EXCLUDE)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime)
