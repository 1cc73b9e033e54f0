// SPDX-License-Identifier: MIT
// What VXMCD_TRACE asks for.
#include "trace/TTraceSettings.h"

#include <charconv>
#include <ctime>
#include <unistd.h>

namespace {

constexpr std::uint64_t kMinLimit = std::uint64_t{1} << 20;
constexpr std::uint64_t kMaxLimit = std::uint64_t{1} << 40;

// "64M" as bytes; 0 when it is no size, or one that no trace can have.
std::uint64_t ParseSize(std::string_view text)
{
  std::uint64_t number = 0;
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return 0;
  const std::string_view unit = text.substr(static_cast<std::size_t>(rest - text.data()));
  const int shift = unit == "K" ? 10 : unit == "M" ? 20 : unit == "G" ? 30 : unit.empty() ? 0 : -1;
  if (shift < 0 || number > kMaxLimit >> shift) return 0;
  const std::uint64_t bytes = number << shift;
  return bytes < kMinLimit ? 0 : bytes;
}

} // namespace

std::string TTraceSettings::Parse(std::string_view text)
{
  *this = TTraceSettings();
  file = text.substr(0, text.find(','));
  if (file.empty()) return "names no file";
  text.remove_prefix(file.size());
  while (!text.empty()) {
    text.remove_prefix(1);
    const std::string_view option = text.substr(0, text.find(','));
    text.remove_prefix(option.size());
    if (option == "frames") {
      hasAllFrames = true;
    } else if (option == "api") {
      hasCore = false;
    } else if (option == "core") {
      hasApi = false;
    } else if (option == "pixels=hash" || option == "pixels=none" || option == "pixels=store") {
      hashesPixels = option != "pixels=none";
      storesPixels = option == "pixels=store";
    } else if (option == "registers") {
      hasRegisters = true;
    } else if (option.starts_with("limit=")) {
      limitBytes = ParseSize(option.substr(6));
      if (limitBytes == 0) return "\"" + std::string(option) + "\" is no size from 1M to 1024G, such as limit=64M";
    } else {
      return "\"" + std::string(option) +
             "\" is none of frames, api, core, pixels=hash, pixels=none, pixels=store, registers, limit=SIZE";
    }
  }
  return hasApi || hasCore ? "" : "has both api and core, which leaves nothing";
}

std::string TTraceSettings::FileName() const
{
  std::string name;
  for (std::size_t i = 0; i < file.size(); ++i) {
    const char next = file[i] == '%' && i + 1 < file.size() ? file[i + 1] : '\0';
    if (next == 'p') {
      name += std::to_string(getpid());
    } else if (next == 't') {
      const std::time_t now = std::time(nullptr);
      std::tm parts{};
      gmtime_r(&now, &parts);
      char text[32];
      name.append(text, std::strftime(text, sizeof text, "%Y%m%dT%H%M%SZ", &parts));
    } else {
      name += file[i];
      if (next != '%') continue;
    }
    ++i;
  }
  return name;
}

bool TTraceSettings::IsForEachProcess() const
{
  for (std::size_t at = file.find('%'); at != std::string::npos && at + 1 < file.size();
       at = file.find('%', at + 2))
    if (file[at + 1] == 'p') return true;
  return false;
}
