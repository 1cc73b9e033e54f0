// SPDX-License-Identifier: MIT
// The acquisition mode as programs know it, kept in step with manager and camera.
#pragma once

#include "utility/TMutex.h"

#include <string>

class IEnum;
class IInt;
class TVxmcdAcquisitionManager;

/// Turns mode number, number of accumulations and number of images of a series into the manager's run mode and
/// image count and the camera's "CycleMode", "AccumulateCount", "FrameCount" and "PixelEncoding". Owned by the
/// camera's record; borrows everything it is given. Thread-safe. Settings that the camera does not take at the moment
/// are remembered and written at the next SetMode() or ApplyPending(). Settings that it refuses are not kept: a count
/// that was set before its mode is refused by SetMode().
class TPseudoAcquisitionMode
{
public:
  enum Mode
  {
    kSingleScan = 1,
    kAccumulate = 2,
    kKinetics = 3,
    kRunTillAbort = 5
  };

  /// What the setters answer.
  enum Status
  {
    kAccepted = 0,
    kRejected = 1,
    kNotAvailableNow = 4,
    kNotSupported = 5
  };

  TPseudoAcquisitionMode(TVxmcdAcquisitionManager* manager, IEnum* pixelEncoding, IEnum* cycleMode,
                         IInt* accumulateCount, IInt* frameCount);
  virtual ~TPseudoAcquisitionMode() = default;

  /// Also answers kRejected, with the earlier mode kept, when the camera does not take a count of this mode.
  virtual int SetMode(int mode);
  virtual int SetNumberAccumulations(int count);
  virtual int SetNumberKinetics(int count);
  virtual int GetMode() const;
  /// The number that is set, whether or not the present mode accumulates.
  virtual int GetNumberAccumulations() const;
  /// Number of images after which the present mode's run is complete; INT_MAX when it never is.
  virtual int GetSeriesLength() const;

  /// Writes what an earlier setter could not write, ending a run that prevents it. Called before each start,
  /// which may go on only if the result is kAccepted: otherwise the run would not be the one that was requested.
  int ApplyPending();

private:
  int Apply() REQUIRES(mutex_);
  int Settle(int status, int& setting, int before) REQUIRES(mutex_);
  int ExposuresPerImage() const REQUIRES(mutex_);
  int WriteCycleMode(const wchar_t* text);
  int WriteCounts() REQUIRES(mutex_);
  void WriteEncoding() REQUIRES(mutex_);
  bool IsMono32Offered();

  TVxmcdAcquisitionManager* manager_;
  IEnum* pixelEncoding_;
  IEnum* cycleMode_;
  IInt* accumulateCount_;
  IInt* frameCount_;
  mutable TMutex mutex_;
  int mode_ GUARDED_BY(mutex_) = kSingleScan;
  int accumulations_ GUARDED_BY(mutex_) = 1;
  int kinetics_ GUARDED_BY(mutex_) = 1;
  bool pending_ GUARDED_BY(mutex_) = false; // the camera has other settings than were requested
  /// What "PixelEncoding" was before accumulation; empty while it is not changed.
  std::wstring encodingBefore_ GUARDED_BY(mutex_);
};
