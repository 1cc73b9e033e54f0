// SPDX-License-Identifier: MIT
// What a benchmark was measured on, printed before its figures.
#pragma once

#include <cstdio>
#include <fstream>
#include <string>
#include <thread>

/// Prints machine, compiler, build type and @p geometry. Build types come from the VXMCD_BUILD_TYPE definition.
inline void printBenchmarkSetting(const char* geometry)
{
  std::string model = "unknown processor";
  std::ifstream processors("/proc/cpuinfo");
  for (std::string line; std::getline(processors, line);) {
    if (line.rfind("model name", 0) != 0) continue;
    model = line.substr(line.find(':') + 2);
    break;
  }
  std::printf("machine: %s, %u cores\ncompiler: %s\nbuild: %s\nframes: %s\n", model.c_str(),
              std::thread::hardware_concurrency(),
#if defined(__clang__)
              "clang " __clang_version__,
#else
              "g++ " __VERSION__,
#endif
              VXMCD_BUILD_TYPE, geometry);
  std::fflush(stdout);
}
