# SPDX-License-Identifier: MIT
vxmcd_benchmark(event_benchmark SOURCES event.cpp LIBRARIES vxmcd_objects)
target_compile_definitions(event_benchmark PRIVATE VXMCD_BUILD_TYPE="$<CONFIG>")
