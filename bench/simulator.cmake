# SPDX-License-Identifier: MIT
vxmcd_benchmark(simulator_benchmark SOURCES simulator.cpp BenchmarkCamera.cpp LIBRARIES vxmcd vxcore)
target_include_directories(simulator_benchmark PRIVATE ${PROJECT_SOURCE_DIR}/include)
target_compile_definitions(simulator_benchmark PRIVATE VXMCD_BUILD_TYPE="$<CONFIG>")
