# SPDX-License-Identifier: MIT
vxmcd_benchmark(steady_state_benchmark SOURCES steady_state.cpp BenchmarkCamera.cpp CountedCalls.cpp
  LIBRARIES vxmcd_objects vxcore)
target_compile_definitions(steady_state_benchmark PRIVATE VXMCD_BUILD_TYPE="$<CONFIG>")
