// SPDX-License-Identifier: MIT
// The present settings of a simulated camera, and what follows from them.
#pragma once

#include "vxcore/simulated/imaging/TFrameSettings.h"
#include "vxcore/simulated/TCameraConfiguration.h"
#include "vxcore/simulated/TCameraModel.h"
#include "vxcore/simulated/TChoice.h"
#include "vxcore/simulated/TI2cBus.h"
#include "vxcore/simulated/TRegisterFile.h"
#include "vxcore/simulated/TThermalModel.h"

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

/// The columns that are read out: left counts sensor pixels from 1, width counts binned pixels.
struct TColumns
{
  long long left = 1;
  long long width = 1;
  long long bin = 1;
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
  TChoices choices; ///< by EChoice

  // Area of interest: left and top count sensor pixels from 1, width and height count binned pixels. Each layout
  // has its own, so that setting up one leaves the other alone.
  TColumns imageColumns;
  TColumns trackColumns;
  long long top = 1;
  long long height;
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
  long long baselineCounts = 100;

  TThermalModel thermal;
  TRegisterFile registers;
  TI2cBus internalBus;
  TI2cBus controllerBus;

  const TChoice& Choice(EChoice choice) const { return choices[static_cast<size_t>(choice)]; }
  TChoice& Choice(EChoice choice) { return choices[static_cast<size_t>(choice)]; }
  bool IsTracks() const { return Choice(EChoice::AoiLayout).Meaning<ELayout>() == ELayout::Track; }
  ETrigger Trigger() const { return Choice(EChoice::TriggerMode).Meaning<ETrigger>(); }
  EShutter Shutter() const { return Choice(EChoice::ShutteringMode).Meaning<EShutter>(); }
  EFan Fan() const { return Choice(EChoice::FanSpeed).Meaning<EFan>(); }
  EPixelEncoding Encoding() const { return Choice(EChoice::PixelEncoding).Meaning<EPixelEncoding>(); }
  /// Both gain channels are combined.
  bool IsGainCombined() const
  {
    return Choice(EChoice::PreAmpGainChannel).Meaning<EGainChannels>() == EGainChannels::Both;
  }
  TColumns& Columns() { return IsTracks() ? trackColumns : imageColumns; }
  const TColumns& Columns() const { return IsTracks() ? trackColumns : imageColumns; }
  TTrackArea& SelectedTrack() { return tracks[static_cast<size_t>(selectedTrack - 1)]; }

  const TModelGain& Gain() const;
  double GainElectronsPerCount() const;
  double ReadNoiseElectrons() const;
  double PixelRateHertz() const;

  /// Each gain channel has its own "PreAmpGain", which the feature shows for the channel of
  /// "PreAmpGainSelector". Whether a text of it may be chosen there:
  bool HasPreAmpGain(std::wstring_view channel, std::wstring_view text) const;
  /// Begins with the first gain of every channel.
  void ResetPreAmpGains();
  /// Stores what was chosen for the selected channel.
  void StorePreAmpGain();
  /// Shows the gain of the selected channel.
  void ShowPreAmpGain();

  /// Puts the area back inside the sensor after the binning or the size changed.
  void FitArea();

  long long OutputRows() const;
  long long StrideBytes() const;
  /// Bytes of the rows, rounded up so that metadata behind them is aligned.
  long long PixelBytes() const;
  long long ImageSizeBytes() const;

  /// The whole of what the FIFO registers show for a full memory.
  long long FifoCapacity() const;

  /// Everything of a frame's settings but what changes from frame to frame.
  TFrameSettings FrameSettings() const;

private:
  std::map<std::wstring, int, std::less<>> preAmpGains_; ///< index of the gain of each channel
};

} // namespace vxsim
