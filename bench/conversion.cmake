# SPDX-License-Identifier: MIT
vxmcd_benchmark(conversion_benchmark SOURCES conversion.cpp LIBRARIES vxmcd_objects)
target_compile_definitions(conversion_benchmark PRIVATE VXMCD_BUILD_TYPE="$<CONFIG>")
