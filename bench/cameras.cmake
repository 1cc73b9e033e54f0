# SPDX-License-Identifier: MIT
vxmcd_benchmark(cameras_benchmark SOURCES cameras.cpp BenchmarkCamera.cpp LIBRARIES vxmcd vxcore)
target_include_directories(cameras_benchmark PRIVATE ${PROJECT_SOURCE_DIR}/include)
target_compile_definitions(cameras_benchmark PRIVATE VXMCD_BUILD_TYPE="$<CONFIG>")
