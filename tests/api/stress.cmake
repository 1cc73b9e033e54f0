# SPDX-License-Identifier: MIT
# Faults, life cycles, threads and long streams, through the public header only. The simulator's imaging library knows
# what a frame of the counter scene must contain.
vxmcd_test(stress_test
  SOURCES
    ../support/CounterCameraTest.cpp
    ../support/ProcessFigures.cpp
    ../support/SimulatedCameraTest.cpp
    FaultSweepTest.cpp
    FaultTest.cpp
  LIBRARIES vxmcd vxcore vxsim_imaging documented_codes
  TIMEOUT 300)
