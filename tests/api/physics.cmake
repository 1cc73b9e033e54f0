# SPDX-License-Identifier: MIT
# Measurements of the simulated cameras as an owner of a camera makes them, through the public header only.
vxmcd_test(physics_test
  SOURCES PhysicsTest.cpp
  LIBRARIES vxmcd vxcore)
