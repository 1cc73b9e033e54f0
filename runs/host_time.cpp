// SPDX-License-Identifier: MIT
// The host's time of day.
#include "runs/host_time.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <ctime>

namespace {

constexpr std::int64_t kNanosecondsPerSecond = 1000000000;

} // namespace

std::int64_t HostTimeNs()
{
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

std::string UtcText(std::int64_t timeNs)
{
  const auto seconds = static_cast<std::time_t>(timeNs / kNanosecondsPerSecond);
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  std::array<char, 32> date{};
  std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &utc);
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%s.%09lldZ", date.data(),
                static_cast<long long>(timeNs % kNanosecondsPerSecond));
  return text.data();
}

std::optional<std::int64_t> HostTimeOf(const std::string& utc)
{
  std::tm time{};
  const char* const rest = strptime(utc.c_str(), "%Y-%m-%dT%H:%M:%S.", &time);
  if (rest == nullptr) return std::nullopt;
  const char* const end = utc.data() + utc.size();
  std::int64_t nanoseconds = 0;
  const auto [next, error] = std::from_chars(rest, end, nanoseconds);
  const bool isWhole =
      error == std::errc{} && next - rest == 9 && nanoseconds >= 0 && end - next == 1 && *next == 'Z';
  if (!isWhole) return std::nullopt;
  return static_cast<std::int64_t>(timegm(&time)) * kNanosecondsPerSecond + nanoseconds;
}
