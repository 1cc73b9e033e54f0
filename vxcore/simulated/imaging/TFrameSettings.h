// SPDX-License-Identifier: MIT
// Everything a simulated frame depends on, as plain values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vxsim {

/// How pixels are stored in a frame row; the values are also in the frame-info chunk.
enum class EPixelEncoding
{
  Mono8 = 0,
  Mono12 = 1,       ///< 12-bit value in a 16-bit word
  Mono12Packed = 2, ///< two pixels in three bytes
  Mono16 = 3,
  Mono32 = 4, ///< signed 32-bit
};

/// What the sensor looks at. Counter and Stamp are test patterns: they bypass the optics and carry frame stamps.
enum class ESceneKind
{
  StarField,
  Beads,
  ResolutionChart,
  Gradient,
  Flat,
  Dark,
  Counter, ///< stamps at head and tail and a computable pattern between (TCounterPattern)
  Stamp,   ///< stamps at head and tail only, the bytes between are left as they are
};

/// The silicon: the same for every frame of a camera.
struct TSensorSettings
{
  int widthPixels = 2048;
  int heightPixels = 2048;
  double fullWellElectrons = 30000.0;
  double quantumEfficiency = 0.6;      ///< electrons per photon, scales every scene
  double darkElectronsPerSecond = 0.1; ///< per pixel at the reference temperature
  double darkReferenceCelsius = 0.0;   ///< the temperature of the dark current above
  double darkDoublingCelsius = 6.0;    ///< warming by this doubles it
  double hotPixelFraction = 1e-4;      ///< pixels with a dark current 50 to 1000 times the others'
  std::uint64_t seed = 1;              ///< places hot pixels, scene objects and noise

  bool operator==(const TSensorSettings&) const = default;
};

/// From electrons to counts.
struct TReadoutSettings
{
  double gainElectronsPerCount = 0.5;
  double readNoiseElectrons =
      1.2;           ///< RMS of one pixel's read-out; adds in quadrature when pixels or frames are summed
  int bitDepth = 16; ///< one read-out saturates at 2^bitDepth - 1; 1 to 16
  double baselineCounts = 100.0; ///< level of a read-out without signal
  bool baselineClamp = true;     ///< false: the level wanders by some counts with time and temperature

  bool operator==(const TReadoutSettings&) const = default;
};

/// One horizontal strip, read out as a single row.
struct TTrack
{
  int topRow = 0; ///< first sensor row, from 0
  int rowCount = 1;

  bool operator==(const TTrack&) const = default;
};

/// Which sensor pixels are read out and how they are laid out in memory.
struct TGeometrySettings
{
  int leftPixels = 0;   ///< first sensor column, from 0
  int topPixels = 0;    ///< first sensor row, from 0; not used with tracks
  int widthPixels = 0;  ///< output columns; leftPixels + widthPixels * horizontalBin must not pass the sensor
  int heightPixels = 0; ///< output rows; with tracks their number
  int horizontalBin = 1;
  int verticalBin = 1;         ///< not used with tracks
  std::vector<TTrack> tracks;  ///< empty: an image; otherwise one output row each, in this order
  std::size_t strideBytes = 0; ///< from one row to the next; 0 means rows without padding
  EPixelEncoding encoding = EPixelEncoding::Mono16;

  bool operator==(const TGeometrySettings&) const = default;
};

/// What the sensor looks at, and how brightly it is lit.
struct TSceneSettings
{
  ESceneKind kind = ESceneKind::StarField;
  double brightness = 1.0;                  ///< multiplies the light of every scene
  double flatPhotonsPerSecond = 100000.0;   ///< photons per sensor pixel and second of Flat; the peak of Gradient
  double backgroundPhotonsPerSecond = 20.0; ///< sky or out-of-focus light of StarField and Beads
  int objectCount = 0;                      ///< stars or beads; 0 picks a number that suits the sensor's area
  double motionScale = 1.0;                 ///< multiplies how fast stars and beads move; 0 freezes them
  bool noise = true;                        ///< false: every count is the rounded mean

  bool operator==(const TSceneSettings&) const = default;
};

/// What changes from frame to frame.
struct TExposureSettings
{
  double exposureSeconds = 0.01; ///< of one exposure
  double sceneSeconds = 0.0;     ///< when the exposure is, on the scene's own clock; moving objects follow it
  int accumulations = 1;         ///< exposures summed into the frame, counts and baseline alike
  double sensorCelsius = 0.0;
  std::uint64_t frameNumber = 0;
  std::uint32_t runNumber = 0;
  std::uint64_t slot = 0; ///< goes into the stamp as it is, for instance the address of the buffer filled

  bool operator==(const TExposureSettings&) const = default;
};

/// All of it. Equal settings give equal bytes, on any thread and after any other frame.
struct TFrameSettings
{
  TSensorSettings sensor;
  TReadoutSettings readout;
  TGeometrySettings geometry;
  TSceneSettings scene;
  TExposureSettings exposure;
};

/// "star field", "beads", "resolution chart", "gradient", "flat", "dark", "counter", "stamp".
const char* SceneName(ESceneKind kind);

/// The scene of that name, in any case and with '-', '_' or nothing for the blank; false leaves kind alone.
bool SceneFromName(std::string_view name, ESceneKind& kind);

/// "Mono8", "Mono12", "Mono12Packed", "Mono16", "Mono32".
const char* EncodingName(EPixelEncoding encoding);
bool EncodingFromName(std::string_view name, EPixelEncoding& encoding);

/// Bytes that a row of that many pixels takes without padding.
std::size_t RowBytes(EPixelEncoding encoding, int widthPixels);

/// The stride in force: strideBytes, or RowBytes() when that is 0.
std::size_t StrideBytes(const TGeometrySettings& geometry);

/// Bytes of all rows with their padding, without metadata.
std::size_t PixelAreaBytes(const TGeometrySettings& geometry);

/// What is wrong with the settings, in words; empty when a frame can be made of them.
std::string FindSettingsFault(const TFrameSettings& settings);

} // namespace vxsim
