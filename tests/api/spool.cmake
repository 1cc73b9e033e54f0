# SPDX-License-Identifier: MIT
# Series written to disk: through the public header, read back by the description of the format.
vxmcd_test(spool_run_test
  SOURCES
    ../support/TScratchDirectory.cpp
    ../support/CounterCameraTest.cpp
    ../support/ProcessFigures.cpp
    ../support/SimulatedCameraTest.cpp
    ../support/TSpoolDirectory.cpp
    SpoolTest.cpp
  LIBRARIES vxmcd vxcore vxsim_imaging
  TIMEOUT 300)
target_include_directories(spool_run_test SYSTEM PRIVATE ${XXHASH_INCLUDE_DIR})
