// SPDX-License-Identifier: MIT
// What a process uses, as the kernel reports it.
#include "tests/support/ProcessFigures.h"

#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace {

int EntryCount(const char* directory)
{
  return static_cast<int>(std::distance(std::filesystem::directory_iterator(directory), {}));
}

} // namespace

int ThreadCount()
{
  return EntryCount("/proc/self/task");
}

int DescriptorCount()
{
  return EntryCount("/proc/self/fd") - 1; // without the one of the directory that is being read
}

long ResidentBytes()
{
  std::ifstream file("/proc/self/statm");
  long total = 0;
  long resident = 0;
  file >> total >> resident;
  return resident * sysconf(_SC_PAGESIZE);
}

double ProcessorSeconds()
{
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}
