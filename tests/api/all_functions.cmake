# SPDX-License-Identifier: MIT
# The functions of the public header with the result codes that it promises, as rows of a table.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
set(function_rows ${CMAKE_CURRENT_BINARY_DIR}/rows/function_rows.inc)
add_custom_command(OUTPUT ${function_rows}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_CURRENT_BINARY_DIR}/rows
  COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/scripts/list-functions > ${function_rows}
  DEPENDS ${PROJECT_SOURCE_DIR}/scripts/list-functions ${PROJECT_SOURCE_DIR}/include/vxmcd.h
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
  LIBRARIES vxmcd vxcore vxsim_imaging documented_codes ${CMAKE_DL_LIBS})

# The header of the functions that do nothing is what their table says.
add_test(NAME FixedResultsHeader COMMAND ${PROJECT_SOURCE_DIR}/scripts/generate-fixed-results --check)
set_tests_properties(FixedResultsHeader PROPERTIES ENVIRONMENT CC=${CMAKE_C_COMPILER})

# The public headers declare the functions that the library exports, and no others.
add_test(NAME DeclaredNames
  COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/check_declared_names $<TARGET_FILE:vxmcd> ${PROJECT_SOURCE_DIR}/include)
set_tests_properties(DeclaredNames PROPERTIES
  ENVIRONMENT "CC=${CMAKE_C_COMPILER};CXX=${CMAKE_CXX_COMPILER};NM=${CMAKE_NM}")
# A table of hundreds of calls: an optimiser takes long over it and gains nothing.
set_source_files_properties(AllFunctionsTest.cpp PROPERTIES COMPILE_OPTIONS -O0 SKIP_PRECOMPILE_HEADERS ON)
