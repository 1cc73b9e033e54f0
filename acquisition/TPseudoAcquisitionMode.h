// SPDX-License-Identifier: MIT
// The acquisition mode as programs know it, kept in step with manager and camera.
#pragma once

#include <mutex>
#include <string>

class IEnum;
class IInt;
class TVxmcdAcquisitionManager;

/// Turns mode number, number of accumulations and number of images of a series into the manager's run mode and
/// image count and the camera's "CycleMode", "AccumulateCount", "FrameCount" and "PixelEncoding". Owned by the
/// camera's record; /// borrows everything it is given. Thread-safe. Settings that the camera does not take
/// at the moment are remembered and written at the next SetMode() or ApplyPending().
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

  virtual int SetMode(int mode);
  virtual int SetNumberAccumulations(int count);
  virtual int SetNumberKinetics(int count);
  virtual int GetMode() const;
  /// The number that is set, whether or not the present mode accumulates.
  virtual int GetNumberAccumulations() const;
  /// Number of images after which the present mode's run is complete; INT_MAX when it never is.
  virtual int GetSeriesLength() const;

  /// Writes what an earlier setter could not write, ending a run that stands in the way. Called before each start.
  void ApplyPending();

private:
  int Apply();
  int ExposuresPerImage() const;
  int WriteCounts();
  void WriteEncoding();
  bool IsMono32Offered();

  TVxmcdAcquisitionManager* manager_;
  IEnum* pixelEncoding_;
  IEnum* cycleMode_;
  IInt* accumulateCount_;
  IInt* frameCount_;
  mutable std::mutex mutex_; // guards what follows
  int mode_ = kSingleScan;
  int accumulations_ = 1;
  int kinetics_ = 1;
  bool pending_ = false;
  std::wstring encodingBefore_; // what "PixelEncoding" was before accumulation; empty while it is not changed
};
