# SPDX-License-Identifier: MIT
# How everything here is compiled: one function, so that every target is built alike.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release)
endif()
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
set(CMAKE_C_FLAGS_RELEASE "-O2 -DNDEBUG")

find_package(Threads REQUIRED)

set(vxmcd_sanitize_flags "")
if(VXMCD_SANITIZE STREQUAL "address")
  set(vxmcd_sanitize_flags -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
elseif(VXMCD_SANITIZE STREQUAL "thread")
  set(vxmcd_sanitize_flags -fsanitize=thread -fno-omit-frame-pointer)
elseif(VXMCD_SANITIZE)
  message(FATAL_ERROR "VXMCD_SANITIZE is '${VXMCD_SANITIZE}'; it may be empty, address or thread")
endif()
add_compile_options(${vxmcd_sanitize_flags})
add_link_options(${vxmcd_sanitize_flags})

# Warnings and visibility that every target of ours gets.
function(vxmcd_compile_options target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual -Wmissing-declarations>
    $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-Wthread-safety>
    $<$<BOOL:${VXMCD_WARNINGS_AS_ERRORS}>:-Werror>)
  set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET hidden C_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
endfunction()

# Common headers are compiled once for the files of a target: in the sanitizers' builds, which take half the time then,
# and for all tests. Where the library and the tool are compiled for use, every file still shows whether it includes what it
# uses; so do Debug builds, which are for development. ccache cannot keep what uses such headers.
if(CMAKE_BUILD_TYPE STREQUAL "Debug" OR CMAKE_CXX_COMPILER_LAUNCHER)
  set(vxmcd_precompile OFF)
else()
  set(vxmcd_precompile ON)
endif()

function(vxmcd_precompile_where_sanitized target)
  if(VXMCD_SANITIZE AND vxmcd_precompile)
    target_precompile_headers(${target} PRIVATE <algorithm> <array> <atomic> <chrono> <functional> <map> <memory> <mutex>
      <string> <vector> ${ARGN})
  endif()
endfunction()

# The sanitizers' builds are not optimised, since that would double the time to compile them. Targets and sources that tests
# spend most of their time in are.
function(vxmcd_optimise_where_sanitized) # TARGET, or SOURCES of this folder
  cmake_parse_arguments(ARG "" "TARGET" "SOURCES" ${ARGN})
  if(VXMCD_SANITIZE AND ARG_TARGET)
    target_compile_options(${ARG_TARGET} PRIVATE -O1)
  endif()
  if(VXMCD_SANITIZE AND ARG_SOURCES) # what was precompiled is not optimised
    set_source_files_properties(${ARG_SOURCES} PROPERTIES COMPILE_OPTIONS -O1 SKIP_PRECOMPILE_HEADERS ON)
  endif()
endfunction()
