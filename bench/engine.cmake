# SPDX-License-Identifier: MIT
vxmcd_benchmark(engine_benchmark SOURCES engine.cpp BenchmarkCamera.cpp LIBRARIES vxmcd vxcore)
target_include_directories(engine_benchmark PRIVATE ${PROJECT_SOURCE_DIR}/include)
target_compile_definitions(engine_benchmark PRIVATE VXMCD_BUILD_TYPE="$<CONFIG>")
