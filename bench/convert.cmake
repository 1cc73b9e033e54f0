# SPDX-License-Identifier: MIT
vxmcd_benchmark(convert_benchmark
  SOURCES convert.cpp BenchmarkCamera.cpp BenchmarkDirectory.cpp FilledSlots.cpp FrameWriters.cpp SpoolRun.cpp
  LIBRARIES vxmcd_objects vxcore)
add_dependencies(convert_benchmark vxmcd_tool)
target_compile_definitions(convert_benchmark PRIVATE
  VXMCD_BUILD_TYPE="$<CONFIG>" VXMCD_TOOL="$<TARGET_FILE:vxmcd_tool>")
