// SPDX-License-Identifier: MIT
// Short files of the system, and numbers of bytes in words.
#include "tools/doctor/SystemFiles.h"

#include <cstdio>
#include <fstream>

namespace vxtool {

std::string FirstLineOf(const std::string& path)
{
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  return line;
}

std::string BytesText(double bytes)
{
  const char* const units[] = {"bytes", "kB", "MB", "GB", "TB", "PB"};
  int unit = 0;
  for (; bytes >= 1000.0 && unit < 5; ++unit) bytes /= 1000.0;
  char text[32];
  std::snprintf(text, sizeof text, bytes < 10.0 && unit > 0 ? "%.1f %s" : "%.0f %s", bytes, units[unit]);
  return text;
}

} // namespace vxtool
