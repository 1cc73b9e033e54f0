# SPDX-License-Identifier: MIT
vxmcd_benchmark(abort_benchmark SOURCES abort.cpp BenchmarkCamera.cpp LIBRARIES vxmcd vxcore)
target_include_directories(abort_benchmark PRIVATE ${PROJECT_SOURCE_DIR}/include)
target_compile_definitions(abort_benchmark PRIVATE VXMCD_BUILD_TYPE="$<CONFIG>")
