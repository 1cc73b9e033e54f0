# SPDX-License-Identifier: MIT
# Series written to disk: through the public header, read back by runs/.
vxmcd_test(spool_run_test
  SOURCES
    ../support/TScratchDirectory.cpp
    ../support/CounterCameraTest.cpp
    ../support/ProcessFigures.cpp
    ../support/SimulatedCameraTest.cpp
    ../support/TSpoolDirectory.cpp
    SpoolTest.cpp
  LIBRARIES vxmcd vxcore vxruns vxsim_imaging
  TIMEOUT 300)
