// SPDX-License-Identifier: MIT
// Names, sizes and checks of frame settings.
#include "vxcore/simulated/imaging/TFrameSettings.h"

#include <array>
#include <limits>

namespace vxsim {
namespace {

struct TSceneRow
{
  ESceneKind kind;
  const char* name;
};

constexpr std::array<TSceneRow, 8> kScenes = {{
    {ESceneKind::StarField, "star field"},
    {ESceneKind::Beads, "beads"},
    {ESceneKind::ResolutionChart, "resolution chart"},
    {ESceneKind::Gradient, "gradient"},
    {ESceneKind::Flat, "flat"},
    {ESceneKind::Dark, "dark"},
    {ESceneKind::Counter, "counter"},
    {ESceneKind::Stamp, "stamp"},
}};

constexpr std::array<const char*, 5> kEncodings = {"Mono8", "Mono12", "Mono12Packed", "Mono16", "Mono32"};

constexpr int kMaximumSidePixels = 65536;
constexpr int kMaximumBitDepth = 16;
constexpr int kMaximumTrackOverlap = 64; // times that all tracks together may read the sensor
constexpr double kMaximumHotPixelFraction = 0.1;

/// Lower case, without blanks, '-' and '_'.
std::string Folded(std::string_view name)
{
  std::string folded;
  for (char c : name) {
    if (c == ' ' || c == '-' || c == '_') continue;
    folded += (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return folded;
}

bool IsBetween(double value, double low, double high)
{
  return value >= low && value <= high; // false for a NaN
}

std::string SensorFault(const TSensorSettings& sensor)
{
  if (sensor.widthPixels < 1 || sensor.widthPixels > kMaximumSidePixels) return "sensor width out of range";
  if (sensor.heightPixels < 1 || sensor.heightPixels > kMaximumSidePixels) return "sensor height out of range";
  if (!IsBetween(sensor.fullWellElectrons, 1.0, 1e9)) return "full well out of range";
  if (!IsBetween(sensor.quantumEfficiency, 0.0, 1.0)) return "quantum efficiency out of range";
  if (!IsBetween(sensor.darkElectronsPerSecond, 0.0, 1e9)) return "dark current out of range";
  if (!IsBetween(sensor.darkReferenceCelsius, -273.15, 1000.0)) return "dark current's temperature out of range";
  if (!IsBetween(sensor.darkDoublingCelsius, 0.1, 1000.0)) return "dark current's doubling step out of range";
  if (!IsBetween(sensor.hotPixelFraction, 0.0, kMaximumHotPixelFraction)) return "hot pixel fraction out of range";
  return {};
}

std::string ReadoutFault(const TReadoutSettings& readout)
{
  if (!IsBetween(readout.gainElectronsPerCount, 1e-4, 1e6)) return "gain out of range";
  if (!IsBetween(readout.readNoiseElectrons, 0.0, 1e6)) return "read noise out of range";
  if (readout.bitDepth < 1 || readout.bitDepth > kMaximumBitDepth) return "bit depth out of range";
  if (!IsBetween(readout.baselineCounts, 0.0, 65535.0)) return "baseline out of range";
  return {};
}

std::string TrackFault(const TTrack& track, int sensorRows)
{
  if (track.topRow < 0 || track.rowCount < 1) return "track out of range";
  if (track.rowCount > sensorRows || track.topRow > sensorRows - track.rowCount) return "track passes the sensor";
  return {};
}

std::string GeometryFault(const TGeometrySettings& geometry, const TSensorSettings& sensor)
{
  if (geometry.widthPixels < 1 || geometry.heightPixels < 1) return "area is empty";
  if (geometry.horizontalBin < 1 || geometry.verticalBin < 1) return "binning below 1";
  if (geometry.leftPixels < 0 || geometry.topPixels < 0) return "area starts before the sensor";
  const auto right = geometry.leftPixels + std::int64_t{geometry.widthPixels} * geometry.horizontalBin;
  if (right > sensor.widthPixels) return "area passes the sensor's width";
  if (geometry.tracks.empty()) {
    const auto bottom = geometry.topPixels + std::int64_t{geometry.heightPixels} * geometry.verticalBin;
    if (bottom > sensor.heightPixels) return "area passes the sensor's height";
  } else {
    if (geometry.tracks.size() != static_cast<std::size_t>(geometry.heightPixels))
      return "height is not the tracks' number";
    std::int64_t rows = 0;
    for (const TTrack& track : geometry.tracks) {
      if (auto fault = TrackFault(track, sensor.heightPixels); !fault.empty()) return fault;
      rows += track.rowCount;
    }
    if (rows > std::int64_t{kMaximumTrackOverlap} * sensor.heightPixels) return "tracks read the sensor too often";
  }
  if (geometry.strideBytes != 0 && geometry.strideBytes < RowBytes(geometry.encoding, geometry.widthPixels))
    return "stride is shorter than a row";
  if (StrideBytes(geometry) >
      std::numeric_limits<std::uint32_t>::max() / static_cast<std::size_t>(geometry.heightPixels))
    return "frame is larger than 4 GiB";
  return {};
}

std::string SceneFault(const TSceneSettings& scene)
{
  if (!IsBetween(scene.brightness, 0.0, 1e9)) return "brightness out of range";
  if (!IsBetween(scene.flatPhotonsPerSecond, 0.0, 1e12)) return "light out of range";
  if (!IsBetween(scene.backgroundPhotonsPerSecond, 0.0, 1e12)) return "background light out of range";
  if (scene.objectCount < 0 || scene.objectCount > 1000000) return "number of objects out of range";
  if (!IsBetween(scene.motionScale, -1e6, 1e6)) return "motion out of range";
  return {};
}

std::string ExposureFault(const TExposureSettings& exposure)
{
  if (!IsBetween(exposure.exposureSeconds, 0.0, 1e6)) return "exposure out of range";
  if (!IsBetween(exposure.sceneSeconds, -1e12, 1e12)) return "scene time out of range";
  if (exposure.accumulations < 1 || exposure.accumulations > 1000000) return "accumulations out of range";
  if (!IsBetween(exposure.sensorCelsius, -273.15, 1000.0)) return "sensor temperature out of range";
  return {};
}

} // namespace

const char* SceneName(ESceneKind kind)
{
  for (const TSceneRow& row : kScenes)
    if (row.kind == kind) return row.name;
  return "unknown";
}

bool SceneFromName(std::string_view name, ESceneKind& kind)
{
  const std::string wanted = Folded(name);
  for (const TSceneRow& row : kScenes) {
    if (Folded(row.name) != wanted) continue;
    kind = row.kind;
    return true;
  }
  return false;
}

const char* EncodingName(EPixelEncoding encoding)
{
  const auto index = static_cast<std::size_t>(encoding);
  return index < kEncodings.size() ? kEncodings[index] : "unknown";
}

bool EncodingFromName(std::string_view name, EPixelEncoding& encoding)
{
  for (std::size_t i = 0; i < kEncodings.size(); ++i) {
    if (name != kEncodings[i]) continue;
    encoding = static_cast<EPixelEncoding>(i);
    return true;
  }
  return false;
}

std::size_t RowBytes(EPixelEncoding encoding, int widthPixels)
{
  const auto width = static_cast<std::size_t>(widthPixels > 0 ? widthPixels : 0);
  switch (encoding) {
  case EPixelEncoding::Mono8:
    return width;
  case EPixelEncoding::Mono12Packed:
    return (3 * width + 1) / 2;
  case EPixelEncoding::Mono12:
  case EPixelEncoding::Mono16:
    return 2 * width;
  case EPixelEncoding::Mono32:
    return 4 * width;
  }
  return 0;
}

std::size_t StrideBytes(const TGeometrySettings& geometry)
{
  return geometry.strideBytes != 0 ? geometry.strideBytes : RowBytes(geometry.encoding, geometry.widthPixels);
}

std::size_t PixelAreaBytes(const TGeometrySettings& geometry)
{
  return geometry.heightPixels > 0 ? StrideBytes(geometry) * static_cast<std::size_t>(geometry.heightPixels) : 0;
}

std::string FindSettingsFault(const TFrameSettings& settings)
{
  if (auto fault = SensorFault(settings.sensor); !fault.empty()) return fault;
  if (auto fault = ReadoutFault(settings.readout); !fault.empty()) return fault;
  if (auto fault = GeometryFault(settings.geometry, settings.sensor); !fault.empty()) return fault;
  if (auto fault = SceneFault(settings.scene); !fault.empty()) return fault;
  return ExposureFault(settings.exposure);
}

} // namespace vxsim
