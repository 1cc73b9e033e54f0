// SPDX-License-Identifier: MIT
// The camera of the acquisition loop, by way of the library.
#pragma once

#include "tools/ICamera.h"
#include "tools/Options.h"

#include <string>

namespace vxtool {

/// An open camera: opened by Open(), closed by the destructor. One camera at a time in a process; one thread at a
/// time.
class TFlatCamera final : public ICamera
{
public:
  TFlatCamera() = default;
  ~TFlatCamera() override;
  TFlatCamera(const TFlatCamera&) = delete;
  TFlatCamera& operator=(const TFlatCamera&) = delete;

  /// Opens the camera with this number in the list; false with Error() set.
  bool Open(int number);
  /// Sets the camera up for a run; false with Error() set. Notes() then says where it did something else than
  /// asked.
  bool SetUp(const TAcquireOptions& options);
  const std::string& Error() const { return error_; }
  const std::string& Notes() const { return notes_; }

  /// Times in force, in s; the cycle is from one exposure to the next.
  double ExposureSeconds() const { return exposureSeconds_; }
  double CycleSeconds() const { return cycleSeconds_; }
  /// Sensor size in pixels; false with Error() set.
  bool SensorSize(int& width, int& height);
  double ReadoutSeconds() const;

  unsigned int Start() override;
  unsigned int Abort() override;
  unsigned int Wait(int timeoutMs) override;
  unsigned int Status(int& status) override;
  unsigned int AvailableImages(int& first, int& last) override;
  unsigned int TotalImages(long& count) override;
  unsigned int FetchImage(long number, PixelDepth depth, std::span<std::byte> pixels) override;
  unsigned int Timestamp(long number, unsigned int& count, long long& ticks) override;
  unsigned int SendTrigger() override;

private:
  bool Check(const char* function, unsigned int code);
  bool SetCounts(const TAcquireOptions& options);
  bool SetTimes(const TAcquireOptions& options);

  std::string error_;
  std::string notes_;
  double exposureSeconds_ = 0.0;
  double cycleSeconds_ = 0.0;
  long accumulations_ = 1;
  bool isOpen_ = false;
};

} // namespace vxtool
