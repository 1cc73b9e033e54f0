// SPDX-License-Identifier: MIT
// Limits: what the system lets a program have.
#include "tools/doctor/Checks.h"
#include "tools/doctor/SystemFiles.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>
#include <sys/resource.h>
#include <thread>

namespace vxtool {

namespace {

constexpr double kNoLimit = std::numeric_limits<double>::infinity();
constexpr double kRingBytes = 300e6; ///< of a run until it is stopped, when no camera is open
constexpr rlim_t kFewFiles = 256;
constexpr double kStreamBufferBytes = 4.0 * 1024 * 1024; ///< of the socket that a camera's images come through

double LimitOf(__rlimit_resource resource)
{
  rlimit limit = {};
  if (getrlimit(resource, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return kNoLimit;
  return static_cast<double>(limit.rlim_cur);
}

/// Bytes of an entry of /proc/meminfo, 0 when there is none.
double MemoryEntry(const std::string& name)
{
  std::ifstream file("/proc/meminfo");
  for (std::string line; std::getline(file, line);)
    if (line.starts_with(name + ":")) return std::strtod(line.c_str() + name.size() + 1, nullptr) * 1024.0;
  return 0.0;
}

/// The directories of this process's control group and of those around it, the innermost first (version 2).
std::vector<std::string> ControlGroups()
{
  std::vector<std::string> directories;
  const std::string line = FirstLineOf("/proc/self/cgroup");
  if (!line.starts_with("0::/")) return directories;
  for (std::string group = line.substr(3); !group.empty(); group.erase(group.rfind('/')))
    directories.push_back("/sys/fs/cgroup" + group);
  directories.emplace_back("/sys/fs/cgroup");
  return directories;
}

/// What this process can still get, of the machine and of its control groups.
double AvailableMemory()
{
  double available = MemoryEntry("MemAvailable");
  for (const std::string& group : ControlGroups()) {
    const std::string limit = FirstLineOf(group + "/memory.max");
    if (limit.empty() || limit == "max") continue;
    const double used = std::strtod(FirstLineOf(group + "/memory.current").c_str(), nullptr);
    available = std::min(available, std::max(0.0, std::strtod(limit.c_str(), nullptr) - used));
  }
  return available;
}

/// Processors that control groups leave this process.
double Processors()
{
  double processors = static_cast<double>(std::thread::hardware_concurrency());
  for (const std::string& group : ControlGroups()) {
    std::istringstream text(FirstLineOf(group + "/cpu.max")); // "50000 100000": microseconds of each period
    double quota = 0.0;
    double period = 0.0;
    if (text >> quota >> period && period > 0.0) processors = std::min(processors, quota / period);
  }
  return processors;
}

void CheckMemory(TFindings& findings, const TCameraFacts& facts)
{
  const bool isKnown = facts.description && facts.description->ringBytes.value;
  const double ring = isKnown ? static_cast<double>(*facts.description->ringBytes.value) : kRingBytes;
  const double needed = ring + 2.0 * facts.ImageBytes();
  const double available = AvailableMemory();
  const std::string text = BytesText(available) + " of memory are free, and a run until it is stopped keeps " +
                           BytesText(ring) + " of images";
  if (available < needed)
    findings.Problem(text, "close other programs, or take images of a smaller area");
  else
    findings.Right(text);
  if (const double limit = LimitOf(RLIMIT_AS); limit < 2.0 * needed)
    findings.Problem("the shell limits a program to " + BytesText(limit) +
                         " of addresses, and the library and a run need " + BytesText(2.0 * needed),
                     "ulimit -v unlimited");
}

bool HasNetworkCamera(const TCameraFacts& facts)
{
  return std::any_of(facts.cameras.begin(), facts.cameras.end(), [](const TAttachedCamera& one) {
    return one.source && *one.source != "simulated" && !one.source->starts_with("usb");
  });
}

void CheckNetworkBuffers(TFindings& findings, const TCameraFacts& facts)
{
  if (!HasNetworkCamera(facts)) return;
  const double most = std::strtod(FirstLineOf("/proc/sys/net/core/rmem_max").c_str(), nullptr);
  const std::string text = "receive buffers of sockets may have " + BytesText(most) + " (net.core.rmem_max)";
  if (most < kStreamBufferBytes)
    findings.Warn(text + ", too few for large images over the network",
                  "sudo sysctl -w net.core.rmem_max=33554432");
  else
    findings.Right(text);
}

} // namespace

void CheckLimits(TFindings& findings, const TCameraFacts& facts)
{
  CheckMemory(findings, facts);
  if (const double files = LimitOf(RLIMIT_NOFILE); files < kFewFiles)
    findings.Warn("a program may open " + std::to_string(static_cast<int>(files)) +
                      " files at most; cameras, recordings and the program need more",
                  "ulimit -n 1024");
  if (const double bytes = LimitOf(RLIMIT_FSIZE); bytes < kNoLimit)
    findings.Problem("the shell limits files to " + BytesText(bytes) + ", and recordings end there",
                     "ulimit -f unlimited");
  const double processors = Processors();
  char text[96];
  std::snprintf(text, sizeof text, "%.3g processors may be used", processors);
  if (processors < 2.0)
    findings.Warn(std::string(text) + "; taking and recording images needs two", "raise the container's limit");
  else
    findings.Right(text);
  CheckNetworkBuffers(findings, facts);
}

} // namespace vxtool
