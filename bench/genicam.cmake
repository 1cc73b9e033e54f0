# SPDX-License-Identifier: MIT
# Real cameras, where Aravis is installed.
if(ARAVIS_FOUND AND VXMCD_BUILD_TESTS)
  vxmcd_benchmark(genicam_benchmark
    SOURCES genicam.cpp ../tests/support/OwnNetwork.cpp
    LIBRARIES vxmcd vxcore vxcore_genicam_objects)
  target_include_directories(genicam_benchmark PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
  target_compile_definitions(genicam_benchmark PRIVATE VXMCD_TEST_CAMERA="$<TARGET_FILE:genicam_test_camera>"
    VXMCD_BUILD_TYPE="$<CONFIG>")
  add_dependencies(genicam_benchmark genicam_test_camera vxcore_genicam)
endif()
