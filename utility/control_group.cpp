// SPDX-License-Identifier: MIT
// What the system lets this process's group of processes use.
#include "utility/control_group.h"

#include <algorithm>
#include <fstream>
#include <limits>

namespace {

constexpr std::uint64_t kNoLimit = std::numeric_limits<std::uint64_t>::max();

// A file with a word instead of a number ("max") is no limit, and so is one that is not there.
std::uint64_t ReadLimit(const std::string& path)
{
  std::uint64_t limit = kNoLimit;
  std::ifstream file(path);
  return file >> limit ? limit : kNoLimit;
}

// The limit of a group is that of the narrowest group around it. In a container, the group's own path may not exist, but
// the directory that it was mounted at does.
std::uint64_t NarrowestLimit(const std::string& mount, std::string group, const std::string& file)
{
  std::uint64_t narrowest = kNoLimit;
  for (;; group.erase(group.find_last_of('/'))) {
    std::string path = mount;
    path.append(group).append("/").append(file);
    narrowest = std::min(narrowest, ReadLimit(path));
    if (group.empty()) return narrowest;
  }
}

bool HasController(const std::string& controllers, const std::string& name)
{
  return ("," + controllers + ",").find("," + name + ",") != std::string::npos;
}

} // namespace

// A line is number:controllers:path. Version 2 of control groups has one line, without controllers.
std::uint64_t ControlGroupMemoryLimit(const std::string& root)
{
  std::uint64_t limit = kNoLimit;
  std::ifstream groups(root + "/proc/self/cgroup");
  for (std::string line; std::getline(groups, line);) {
    const std::size_t first = line.find(':');
    const std::size_t second = line.find(':', first + 1);
    if (first == std::string::npos || second == std::string::npos || line[second + 1] != '/') continue;
    const std::string controllers = line.substr(first + 1, second - first - 1);
    const std::string group = line.substr(second + 1);
    if (controllers.empty())
      limit = std::min(limit, NarrowestLimit(root + "/sys/fs/cgroup", group, "memory.max"));
    else if (HasController(controllers, "memory"))
      limit = std::min(limit, NarrowestLimit(root + "/sys/fs/cgroup/memory", group, "memory.limit_in_bytes"));
  }
  return limit;
}
