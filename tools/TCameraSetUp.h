// SPDX-License-Identifier: MIT
// Sets an open camera up for a run.
#pragma once

#include "tools/Options.h"
#include "tools/RunSettings.h"

#include <string>

namespace vxtool {

/// Carries the options of a run out on the open camera, and checks afterwards what the library does not report.
/// Remembers what is in force. One thread at a time; for one use.
class TCameraSetUp final
{
public:
  /// False with Error() set: one line that names the option, what the library said and what can be tried.
  bool Apply(const TAcquireOptions& options);
  const std::string& Error() const { return error_; }
  /// Where the camera does something else than asked, a line each.
  const std::string& Notes() const { return notes_; }

  /// Size of an image in pixels.
  int ImageWidth() const;
  int ImageHeight() const;
  const TSensorArea& Area() const { return area_; }
  const TReadout& Readout() const { return readout_; }
  /// What the camera is set to, for a file of settings.
  TSettingsInForce InForce() const;
  /// Times in force, in s; the cycle is from one exposure to the next.
  double ExposureSeconds() const { return exposureSeconds_; }
  double CycleSeconds() const { return cycleSeconds_; }
  double ReadoutSeconds() const;
  /// The target of the cooler that is set, in C: where a ramp starts.
  int FirstTargetCelsius() const { return firstTargetCelsius_; }
  /// Whether Apply() has switched the cooler on; it may have failed after that.
  bool HasSwitchedCoolerOn() const { return hasSwitchedCoolerOn_; }

private:
  bool Check(const char* option, const char* function, unsigned int code);
  // The same for a function that takes the value of the option.
  bool CheckValue(const char* option, const std::string& value, const char* function, unsigned int code);
  bool CheckIndices(const TReadoutOptions& readout);
  bool Fail(const std::string& message);
  bool SetCooling(const TCoolingOptions& cooling);
  bool SetReadout(TReadoutOptions readout);
  bool ChooseChannelForGain(TReadoutOptions& readout);
  bool SetEncoding(const std::string& encoding);
  bool SetFeatures(const std::vector<TFeatureSetting>& settings);
  bool SetOverlap(const std::optional<bool>& isOverlapped);
  bool SetCycle(const char* option, const std::optional<double>& asked, bool isBetweenSummed);
  bool CheckBits(const TAcquireOptions& options);
  // Sets a feature as an option says. @param feature  then what it is set to
  bool SetOneFeature(const std::string& option, const TFeatureSetting& setting, TCameraFeature& feature);
  bool SetTrigger(Trigger trigger);
  std::string BinningsText() const; // those that the camera has
  bool SetArea(const TImageAreaOptions& area);
  bool IsBinningInForce() const;
  bool SetTracks(const TImageAreaOptions& area);
  bool SetCounts(const TAcquireOptions& options);
  bool SetExposure(double seconds);
  bool SetTimes(const TAcquireOptions& options);
  bool ReadTimes(const TAcquireOptions& options);
  bool SetSpooling(TSpoolOptions spool);

  std::string error_;
  std::string notes_;
  TSensorArea area_;
  TReadout readout_;
  std::string encoding_; // of single exposures
  std::vector<TFeatureSetting> features_;
  double exposureSeconds_ = 0.0;
  double cycleSeconds_ = 0.0;
  int firstTargetCelsius_ = 0;
  bool hasSwitchedCoolerOn_ = false;
};

} // namespace vxtool
