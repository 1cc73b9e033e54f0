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

# Debian packages, one a component: cpack -G DEB in the build directory.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "vxmcd maintainers <maintainers@vxmcd.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_COMPONENTS_ALL runtime development tools python)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libvxmcd3)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "Flat camera-control interface over feature-based cameras")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvxmcd-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Headers, documentation and examples of libvxmcd")
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME vxmcd-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION science)
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "Command-line tool for scientific cameras")
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-vxmcd)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3:any, python3-numpy")
set(CPACK_COMPONENT_PYTHON_DEPENDS runtime)
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "Scientific cameras in Python")
include(CPack)
