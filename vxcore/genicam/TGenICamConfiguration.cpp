// SPDX-License-Identifier: MIT
// Keys of the [GenICam] section.
#include "vxcore/genicam/TGenICamConfiguration.h"

namespace vxgenicam {

namespace {

constexpr int kMaxPoolFrames = 4096;
constexpr int kMinPacketBytes = 576; ///< what every network carries
constexpr int kMaxPacketBytes = 16384;

using TReader = bool (*)(TGenICamConfiguration& configuration, const std::string& value, std::string& error);

bool ReadDevices(TGenICamConfiguration& configuration, const std::string& value, std::string& error)
{
  for (const std::string& device : vxcore::Split(value, ',')) {
    if (device.empty()) {
      error = "an address is missing between two commas";
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
  return vxcore::ReadInteger(value, 2, kMaxPoolFrames, configuration.stream.poolFrames);
}

bool ReadIncomplete(TGenICamConfiguration& configuration, const std::string& value, std::string&)
{
  if (value == "deliver")
    configuration.incomplete = EIncomplete::Deliver;
  else if (value == "drop")
    configuration.incomplete = EIncomplete::Drop;
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
  const char* form; ///< what is accepted, where the reader does not say it
};

constexpr TKey kKeys[] = {
    {"Devices", ReadDevices, "addresses with commas between them are"},
    {"Map", ReadMap, "the name of a map file is"},
    {"Line", ReadLine, "the name of an input, Line1, is"},
    {"Pool", ReadPool, "a number of frames from 2 to 4096 is"},
    {"Incomplete", ReadIncomplete, "drop or deliver is"},
    {"PacketSize", ReadPacketSize, "auto, or a number of bytes from 576 to 16384, is"},
    {"PacketSocket", ReadPacketSocket, "on or off is"},
};

} // namespace

bool TGenICamConfiguration::Read(const vxcore::TBackendEntries& entries, std::string& error)
{
  for (const vxcore::TConfigurationEntry& entry : entries) {
    const TKey* key = nullptr;
    for (const TKey& one : kKeys)
      if (entry.key == one.name) key = &one;
    if (!key) {
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
