// SPDX-License-Identifier: MIT
// The table of features and their sources, and the map files that replace rows of it.
#include "vxcore/genicam/TFeatureMap.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace vxgenicam {

namespace {

constexpr double kSecondsPerMicrosecond = 1e-6;

// Names of the Standard Features Naming Convention (SFNC), then those of older cameras.
constexpr TMapRow kRows[] = {
    {"AOIHBin", EOrigin::Optional, {"BinningHorizontal"}},
    {"AOIHeight", EOrigin::Derived, {"Height"}},
    {"AOILeft", EOrigin::Derived, {"OffsetX"}},
    {"AOITop", EOrigin::Derived, {"OffsetY"}},
    {"AOIVBin", EOrigin::Optional, {"BinningVertical"}},
    {"AOIWidth", EOrigin::Derived, {"Width"}},
    {"AcquisitionStart", EOrigin::Derived, {"AcquisitionStart"}},
    {"AcquisitionStop", EOrigin::Derived, {"AcquisitionStop"}},
    {"BaselineLevel", EOrigin::Optional, {"BlackLevel", "BlackLevelRaw"}},
    {"CameraModel", EOrigin::Derived, {"DeviceModelName"}},
    {"ElectronicShutteringMode", EOrigin::Optional, {"SensorShutterMode"}},
    {"ExposureTime",
     EOrigin::Derived,
     {"ExposureTime", "ExposureTimeAbs", "ExposureTimeRaw"},
     kSecondsPerMicrosecond},
    {"FanSpeed", EOrigin::MapOnly},
    {"FirmwareVersion", EOrigin::Derived, {"DeviceFirmwareVersion", "DeviceVersion"}},
    {"FrameRate", EOrigin::Derived, {"AcquisitionFrameRate", "AcquisitionFrameRateAbs"}},
    {"Overlap", EOrigin::Optional, {"TriggerOverlap"}},
    {"PixelEncoding", EOrigin::Derived, {"PixelFormat"}},
    {"PixelHeight", EOrigin::Optional, {"SensorPixelHeight"}},
    {"PixelReadoutRate", EOrigin::Emulated, {"DeviceClockFrequency"}},
    {"PixelWidth", EOrigin::Optional, {"SensorPixelWidth"}},
    {"PreAmpGain", EOrigin::Optional, {"Gain"}},
    {"ReadoutTime", EOrigin::Optional, {"SensorReadoutTime"}, kSecondsPerMicrosecond},
    {"SensorCooling", EOrigin::MapOnly},
    {"SensorHeight", EOrigin::Derived, {"SensorHeight", "HeightMax"}},
    {"SensorTemperature", EOrigin::Optional, {"DeviceTemperature", "TemperatureAbs"}},
    {"SensorWidth", EOrigin::Derived, {"SensorWidth", "WidthMax"}},
    {"SerialNumber", EOrigin::Derived, {"DeviceSerialNumber", "DeviceID"}},
    {"SoftwareTrigger", EOrigin::Derived, {"TriggerSoftware"}},
    {"TargetSensorTemperature", EOrigin::MapOnly},
    {"TimestampClockReset", EOrigin::Emulated, {"TimestampReset", "GevTimestampControlReset"}},
    {"TriggerMode", EOrigin::Derived, {"TriggerMode"}},
};
static_assert(std::ranges::is_sorted(kRows, {}, [](const TMapRow& row) { return std::string_view(row.name); }));

const TMapRow* RowOf(std::string_view feature)
{
  const auto* const found = std::ranges::find(kRows, feature, &TMapRow::name);
  return found == std::end(kRows) ? nullptr : found;
}

} // namespace

std::span<const TMapRow> MapRows()
{
  return kRows;
}

bool TFeatureMap::Read(const std::string& path, std::string& error)
{
  std::string text;
  std::vector<vxcore::TConfigurationEntry> entries;
  const bool isRead =
      vxcore::ReadConfigurationFile(path, text, error) && vxcore::ReadEntries(text, entries, error) &&
      std::ranges::all_of(entries, [this, &error](const auto& entry) { return ReadEntry(entry, error); });
  if (!isRead) error = path + ": " + error;
  return isRead;
}

bool TFeatureMap::ReadEntry(const vxcore::TConfigurationEntry& entry, std::string& error)
{
  const std::string where = "line " + std::to_string(entry.line) + ", " + entry.key;
  const TMapRow* row = RowOf(entry.key);
  if (!row) {
    error = where + ": no feature that can be mapped has this name";
    return false;
  }
  const std::vector<std::string> parts = vxcore::Split(entry.value, ',');
  constexpr double kAny = std::numeric_limits<double>::max();
  TSource source{"", row->scale, 0.0};
  const bool isRead = !parts.empty() && parts.size() <= 3 && !parts[0].empty() &&
                      (parts.size() < 2 || vxcore::ReadNumber(parts[1], -kAny, kAny, source.scale)) &&
                      (parts.size() < 3 || vxcore::ReadNumber(parts[2], -kAny, kAny, source.offset)) &&
                      source.scale != 0.0;
  if (!isRead) {
    error = where + ": '" + entry.value +
            "' is not the name of a camera's feature, or the name, a scale other than 0, " + "and an offset";
    return false;
  }
  source.node = parts[0];
  replaced_[entry.key] = source;
  return true;
}

TSource TFeatureMap::SourceOf(std::string_view feature, const TNodes& nodes) const
{
  if (const auto found = replaced_.find(feature); found != replaced_.end())
    return nodes.Has(found->second.node) ? found->second : TSource{};
  const TMapRow* row = RowOf(feature);
  if (!row) return {};
  for (const char* name : row->nodes)
    if (name && nodes.Has(name)) return {name, row->scale, 0.0};
  return {};
}

} // namespace vxgenicam
