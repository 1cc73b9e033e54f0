// SPDX-License-Identifier: MIT
// Keys of the [GenICam] section.
#include "vxcore/genicam/TGenICamConfiguration.h"

#include <algorithm>
#include <utility>

namespace vxgenicam {

namespace {

constexpr int kMinPoolFrames = 2;
constexpr int kMaxPoolFrames = 4096;
constexpr int kMinPacketBytes = 576; ///< what every network carries
constexpr int kMaxPacketBytes = 16384;

constexpr std::pair<const char*, EIncomplete> kIncomplete[] = {{"drop", EIncomplete::Drop},
                                                               {"deliver", EIncomplete::Deliver}};

using TReader = bool (*)(TGenICamConfiguration& configuration, const std::string& value, std::string& error);

bool ReadDevices(TGenICamConfiguration& configuration, const std::string& value, std::string& error)
{
  for (const std::string& device : vxcore::Split(value, ',')) {
    if (device.empty()) {
      error = "an address is missing between two commas";
      return false;
    }
    if (std::ranges::count(configuration.devices, device) > 0) {
      error = "'" + device + "' is there twice";
      return false;
    }
    configuration.devices.push_back(device);
  }
  return true;
}

bool ReadMap(TGenICamConfiguration& configuration, const std::string& value, std::string& error)
{
  return configuration.map.Read(value, error);
}

bool ReadLine(TGenICamConfiguration& configuration, const std::string& value, std::string&)
{
  configuration.line = value;
  return !value.empty();
}

bool ReadPool(TGenICamConfiguration& configuration, const std::string& value, std::string&)
{
  return vxcore::ReadInteger(value, kMinPoolFrames, kMaxPoolFrames, configuration.stream.poolFrames);
}

bool ReadIncomplete(TGenICamConfiguration& configuration, const std::string& value, std::string&)
{
  configuration.incomplete.reset();
  for (const auto& [word, incomplete] : kIncomplete)
    if (value == word) configuration.incomplete = incomplete;
  return configuration.incomplete.has_value();
}

bool ReadPacketSize(TGenICamConfiguration& configuration, const std::string& value, std::string&)
{
  return value == "auto" ||
         vxcore::ReadInteger(value, kMinPacketBytes, kMaxPacketBytes, configuration.packetBytes);
}

bool ReadPacketSocket(TGenICamConfiguration& configuration, const std::string& value, std::string&)
{
  return vxcore::ReadSwitch(value, configuration.stream.usesPacketSocket);
}

struct TKey
{
  const char* name;
  TReader read;
  std::string form = {}; ///< what is accepted, where the reader does not say it
};

std::string NumberOf(const char* what, int minimum, int maximum)
{
  return std::string("a number of ") + what + " from " + std::to_string(minimum) + " to " +
         std::to_string(maximum);
}

std::vector<TKey> Keys()
{
  return {
      {"Devices", ReadDevices},
      {"Map", ReadMap},
      {"Line", ReadLine, "the name of an input, Line1, is"},
      {"Pool", ReadPool, NumberOf("frames", kMinPoolFrames, kMaxPoolFrames) + " is"},
      {"Incomplete", ReadIncomplete, std::string(kIncomplete[0].first) + " or " + kIncomplete[1].first + " is"},
      {"PacketSize", ReadPacketSize, "auto, or " + NumberOf("bytes", kMinPacketBytes, kMaxPacketBytes) + ", is"},
      {"PacketSocket", ReadPacketSocket, "on or off is"},
  };
}

} // namespace

bool TGenICamConfiguration::Read(const vxcore::TBackendEntries& entries, std::string& error)
{
  const std::vector<TKey> keys = Keys();
  for (const vxcore::TConfigurationEntry& entry : entries) {
    const auto key = std::ranges::find(keys, entry.key, &TKey::name);
    if (key == keys.end()) {
      error = entry.Where() + ": unknown key";
      return false;
    }
    std::string reason;
    if (key->read(*this, entry.value, reason)) continue;
    if (reason.empty()) reason = "'" + entry.value + "' is not a valid value; " + key->form;
    error = entry.Where() + ": " + reason;
    return false;
  }
  return true;
}

} // namespace vxgenicam
