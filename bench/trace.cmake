# SPDX-License-Identifier: MIT
vxmcd_benchmark(trace_benchmark SOURCES trace.cpp BenchmarkCamera.cpp LIBRARIES vxmcd vxcore)
target_include_directories(trace_benchmark PRIVATE ${PROJECT_SOURCE_DIR}/include)
target_compile_definitions(trace_benchmark PRIVATE VXMCD_BUILD_TYPE="$<CONFIG>")
