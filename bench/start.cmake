# SPDX-License-Identifier: MIT
vxmcd_benchmark(start_benchmark SOURCES start.cpp BenchmarkCamera.cpp LIBRARIES vxmcd vxcore)
target_include_directories(start_benchmark PRIVATE ${PROJECT_SOURCE_DIR}/include)
target_compile_definitions(start_benchmark PRIVATE VXMCD_BUILD_TYPE="$<CONFIG>")
