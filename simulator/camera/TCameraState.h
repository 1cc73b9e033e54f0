// SPDX-License-Identifier: MIT
// The present settings of a simulated camera, and what follows from them.
#pragma once

#include "simulator/camera/TCameraModel.h"
#include "simulator/config/TCameraConfiguration.h"
#include "simulator/features/TChoice.h"
#include "simulator/imaging/TFrameSettings.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace vxsim {

/// A horizontal strip of the sensor, first row counted from 1.
struct TTrackArea
{
  long long top = 1;
  long long rows = 1;
};

/// The settings of one open camera. Owned by TSimulatedCamera; features read and write it under the device's lock.
/// `revision` grows with every change.
struct TCameraState
{
  TCameraState(const TCameraModel& cameraModel, const TCameraConfiguration& cameraConfiguration);
  TCameraState(const TCameraState&) = delete;
  TCameraState& operator=(const TCameraState&) = delete;

  const TCameraModel& model;
  const TCameraConfiguration& configuration;
  uint64_t revision = 1;
  bool acquiring = false;

  long long sensorWidth;
  long long sensorHeight;
  std::map<std::wstring, TChoice, std::less<>> choices;

  // Area of interest: left and top count sensor pixels from 1, width and height count binned pixels.
  long long left = 1;
  long long top = 1;
  long long width;
  long long height;
  long long horizontalBin = 1;
  long long verticalBin = 1;
  std::vector<TTrackArea> tracks{1};
  long long selectedTrack = 1;

  double exposureSeconds = 0.01;
  double requestedFrameRate = 0.0; ///< 0: as fast as possible
  double requestedBurstRate = 0.0;
  long long accumulateCount = 1;
  long long frameCount = 1;
  bool overlap = false;
  bool metadata = false;
  bool baselineClamp = true;

  /// The enumerated setting of that name; an empty one when the model lacks it.
  const TChoice& Choice(std::wstring_view feature) const;
  TChoice* FindChoice(std::wstring_view feature);
  bool IsTracks() const { return Choice(L"AOILayout").Is(L"Track"); }
  TTrackArea& SelectedTrack() { return tracks[static_cast<size_t>(selectedTrack - 1)]; }

  const TModelGain& Gain() const;
  double GainElectronsPerCount() const;

  /// Puts the area back inside the sensor after the binning or the size changed.
  void FitArea();

  long long OutputRows() const;
  long long StrideBytes() const;
  EPixelEncoding Encoding() const;
  /// Bytes of the rows, rounded up so that metadata behind them is aligned.
  long long PixelBytes() const;
  long long ImageSizeBytes() const;

  /// Everything of a frame's settings but what changes from frame to frame.
  TFrameSettings FrameSettings() const;
};

} // namespace vxsim
