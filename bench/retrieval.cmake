# SPDX-License-Identifier: MIT
vxmcd_benchmark(retrieval_benchmark SOURCES retrieval.cpp BenchmarkCamera.cpp LIBRARIES vxmcd vxcore)
target_include_directories(retrieval_benchmark PRIVATE ${PROJECT_SOURCE_DIR}/include)
target_compile_definitions(retrieval_benchmark PRIVATE VXMCD_BUILD_TYPE="$<CONFIG>")
