# SPDX-License-Identifier: MIT
# The image-making half of the simulated cameras.
vxmcd_test(simulator_imaging_test
  SOURCES imaging_test.cpp
  LIBRARIES vxsim_imaging)
