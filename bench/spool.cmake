# SPDX-License-Identifier: MIT
vxmcd_benchmark(spool_benchmark
  SOURCES spool.cpp BenchmarkCamera.cpp BenchmarkDirectory.cpp FilledSlots.cpp FrameWriters.cpp SpoolParts.cpp
          SpoolRun.cpp
  LIBRARIES vxmcd_objects vxcore)
target_compile_definitions(spool_benchmark PRIVATE VXMCD_BUILD_TYPE="$<CONFIG>")

# Other formats' libraries are there to be compared with, and may be missing.
pkg_check_modules(SPOOL_BENCHMARK_TIFF QUIET IMPORTED_TARGET libtiff-4)
if(TARGET PkgConfig::SPOOL_BENCHMARK_TIFF)
  target_link_libraries(spool_benchmark PRIVATE PkgConfig::SPOOL_BENCHMARK_TIFF)
  target_compile_definitions(spool_benchmark PRIVATE VXMCD_BENCHMARK_TIFF)
else()
  message(STATUS "spool_benchmark: no libtiff, its comparison is left out")
endif()
if(HDF5_FOUND)
  target_link_libraries(spool_benchmark PRIVATE PkgConfig::HDF5)
  target_compile_definitions(spool_benchmark PRIVATE VXMCD_BENCHMARK_HDF5)
else()
  message(STATUS "spool_benchmark: no HDF5, its comparison is left out")
endif()
