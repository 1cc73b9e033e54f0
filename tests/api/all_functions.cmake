# SPDX-License-Identifier: MIT
# Every function that the library exports, in every state of a camera's life.
vxmcd_test(all_functions_test
  SOURCES
    ../support/CounterCameraTest.cpp
    ../support/DocumentedCodes.cpp
    ../support/SimulatedCameraTest.cpp
    AllFunctionsTest.cpp
    FixedResultsTest.cpp
  LIBRARIES vxmcd vxcore vxsim_imaging ${CMAKE_DL_LIBS})
target_compile_definitions(all_functions_test PRIVATE
  EXPORTED_NAMES="${PROJECT_SOURCE_DIR}/api/exported_names.txt")

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
