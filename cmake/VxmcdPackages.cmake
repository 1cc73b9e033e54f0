# SPDX-License-Identifier: MIT
# Looks for everything that the project needs of others, in one place, and says of all that is missing which packages
# bring it.

# Notes the Debian package of something that was not found.
macro(vxmcd_need is_found package)
  if(NOT ${is_found})
    list(APPEND missing_packages ${package})
  endif()
endmacro()

# Ends the configuration when a package of this group of scripts/packages.txt is missing.
function(vxmcd_stop_if_packages_are_missing group otherwise)
  if(missing_packages)
    list(JOIN missing_packages " " packages)
    message(FATAL_ERROR "Missing: ${packages} (names of Debian packages).\n"
      "`scripts/setup ${group}` installs what is needed${otherwise}.")
  endif()
endfunction()

set(missing_packages "")
find_package(PkgConfig QUIET)
vxmcd_need(PkgConfig_FOUND pkg-config)
find_package(CLI11 QUIET)
vxmcd_need(CLI11_FOUND libcli11-dev)
find_package(nlohmann_json QUIET)
vxmcd_need(nlohmann_json_FOUND nlohmann-json3-dev)
find_path(SIMPLEINI_INCLUDE_DIR SimpleIni.h)
vxmcd_need(SIMPLEINI_INCLUDE_DIR libsimpleini-dev)
find_path(XXHASH_INCLUDE_DIR xxhash.h)
vxmcd_need(XXHASH_INCLUDE_DIR libxxhash-dev)
if(PkgConfig_FOUND)
  pkg_check_modules(CFITSIO QUIET IMPORTED_TARGET GLOBAL cfitsio)
  pkg_check_modules(PNG QUIET IMPORTED_TARGET GLOBAL libpng)
  pkg_check_modules(LIBARCHIVE QUIET IMPORTED_TARGET GLOBAL libarchive)
  pkg_check_modules(NETTLE QUIET IMPORTED_TARGET GLOBAL nettle)
  vxmcd_need(LIBARCHIVE_FOUND libarchive-dev)
  vxmcd_need(NETTLE_FOUND nettle-dev)
  vxmcd_need(CFITSIO_FOUND libcfitsio-dev)
  vxmcd_need(PNG_FOUND libpng-dev)
endif()
vxmcd_stop_if_packages_are_missing(build "")

# Real cameras: optional.
pkg_check_modules(ARAVIS QUIET IMPORTED_TARGET GLOBAL aravis-0.8)
if(NOT ARAVIS_FOUND)
  message(STATUS "Without libaravis-dev and libusb-1.0-0-dev: no GigE Vision and USB3 Vision cameras "
    "(`scripts/setup genicam`)")
endif()

if(VXMCD_BUILD_TESTS)
  find_package(GTest QUIET)
  vxmcd_need(GTest_FOUND libgtest-dev)
  vxmcd_need("TARGET;GTest::gmock" libgmock-dev)
  pkg_check_modules(TIFF QUIET IMPORTED_TARGET GLOBAL libtiff-4)
  vxmcd_need(TIFF_FOUND libtiff-dev)
  find_program(FITSVERIFY fitsverify)
  vxmcd_need(FITSVERIFY fitsverify)
  find_program(JAVA java)
  vxmcd_need(JAVA default-jre-headless)
  find_file(IMAGEJ_JAR ij.jar PATHS /usr/share/java)
  vxmcd_need(IMAGEJ_JAR libij-java)
  find_file(BEANSHELL_JAR bsh.jar PATHS /usr/share/java)
  vxmcd_need(BEANSHELL_JAR libbsh-java)
  # The python3 found first need not be the one that the distribution's packages belong to.
  find_program(TIFFFILE_PYTHON python3 NO_SYSTEM_ENVIRONMENT_PATH)
  set(TIFFFILE_FOUND FALSE)
  if(TIFFFILE_PYTHON)
    execute_process(COMMAND ${TIFFFILE_PYTHON} -c "import tifffile"
      RESULT_VARIABLE result OUTPUT_QUIET ERROR_QUIET)
    if(result EQUAL 0)
      set(TIFFFILE_FOUND TRUE)
    endif()
  endif()
  vxmcd_need(TIFFFILE_FOUND python3-tifffile)
  vxmcd_stop_if_packages_are_missing(test "; -DVXMCD_BUILD_TESTS=OFF builds without the tests")
endif()

if(VXMCD_BUILD_BENCHMARKS)
  find_package(benchmark QUIET)
  vxmcd_need(benchmark_FOUND libbenchmark-dev)
  vxmcd_stop_if_packages_are_missing(test "; -DVXMCD_BUILD_BENCHMARKS=OFF builds without the benchmarks")
endif()
