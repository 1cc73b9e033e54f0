# SPDX-License-Identifier: MIT
# Long streams, opening and closing in every state, and threads that get in each other's way.
vxmcd_test(lifecycle_test
  SOURCES
    ../support/CounterCameraTest.cpp
    ../support/ProcessFigures.cpp
    ../support/SimulatedCameraTest.cpp
    ../support/TScratchDirectory.cpp
    ConcurrencyTest.cpp
    IndependentCamerasTest.cpp
    LifecycleTest.cpp
    StreamTest.cpp
  LIBRARIES vxmcd vxcore vxsim_imaging
  TIMEOUT 300)

# The setting as a program finds it that cannot be changed.
add_test(NAME IndependentCameras.environment
  COMMAND lifecycle_test --gtest_filter=IndependentCameras.FramesEndAndAbortBelongToTheCameraThatStarted)
set_tests_properties(IndependentCameras.environment PROPERTIES TIMEOUT 60 ENVIRONMENT VXMCD_INDEPENDENT_CAMERAS=1)

# A program that ends in the middle of a run, in a way that its argument says.
add_executable(ends_in_a_run ../support/ends_in_a_run.cpp)
vxmcd_compile_options(ends_in_a_run)
target_include_directories(ends_in_a_run PRIVATE ${PROJECT_SOURCE_DIR}/include)
target_link_libraries(ends_in_a_run PRIVATE vxmcd vxcore ${CMAKE_DL_LIBS})
target_compile_definitions(ends_in_a_run PRIVATE LIBRARY_PATH="$<TARGET_FILE:vxmcd>")
foreach(way return exit quick unload)
  add_test(NAME EndsInARun.${way} COMMAND ends_in_a_run ${way})
  # ThreadSanitizer has a program wait for a second at its end, and this one has many ends.
  set_tests_properties(EndsInARun.${way} PROPERTIES TIMEOUT 60 ENVIRONMENT TSAN_OPTIONS=atexit_sleep_ms=100)
endforeach()
