# SPDX-License-Identifier: MIT
# The functions of the public header with the result codes that it documents, as rows of a table.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
set(function_rows ${CMAKE_CURRENT_BINARY_DIR}/rows/function_rows.inc)
add_custom_command(OUTPUT ${function_rows}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_CURRENT_BINARY_DIR}/rows
  COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/scripts/generate-interface --print documented_codes
    > ${function_rows}
  DEPENDS ${PROJECT_SOURCE_DIR}/scripts/interface/documented_codes.py ${PROJECT_SOURCE_DIR}/include/vxmcd.h
  VERBATIM)
add_library(documented_codes OBJECT ../support/DocumentedCodes.cpp ${function_rows})
vxmcd_compile_options(documented_codes)
target_include_directories(documented_codes
  PUBLIC ${CMAKE_CURRENT_BINARY_DIR}/rows PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)

# Every function that the library exports, in every state of a camera's life.
vxmcd_test(all_functions_test
  SOURCES
    ../support/CounterCameraTest.cpp
    ../support/SimulatedCameraTest.cpp
    AllFunctionsTest.cpp
    FixedResultsTest.cpp
  LIBRARIES vxmcd vxcore vxsim_imaging vxtrace vxruns documented_codes ${CMAKE_DL_LIBS})
target_compile_definitions(all_functions_test PRIVATE VXMCD_API_FOLDER="${PROJECT_SOURCE_DIR}/api")

# A table of hundreds of calls: an optimiser takes long over it and gains nothing.
set_source_files_properties(AllFunctionsTest.cpp PROPERTIES COMPILE_OPTIONS -O0 SKIP_PRECOMPILE_HEADERS ON)
