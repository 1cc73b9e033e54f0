// SPDX-License-Identifier: MIT
// The camera of the acquisition loop, by way of the library.
#pragma once

#include "tools/CameraDescription.h"
#include "tools/ICamera.h"
#include "vxmcd.h"

#include <optional>
#include <string>

namespace vxtool {

/// An open camera: opened by Open(), closed by the destructor. One thread at a time; other cameras may be used by other
/// threads at the same time, since every call makes its camera the thread's own.
class TFlatCamera final : public ICamera
{
public:
  TFlatCamera() = default;
  ~TFlatCamera() override;
  TFlatCamera(const TFlatCamera&) = delete;
  TFlatCamera& operator=(const TFlatCamera&) = delete;

  /// Opens the camera with this number in the list; false with Error() set.
  bool Open(int number);
  /// Makes this camera the calling thread's own: for calls of the library that this class does not have.
  unsigned int Choose() const { return vxmcd_SetCurrentCameraOfThread(handle_, nullptr); }
  /// Makes a call that answers a result code, for this camera.
  template <typename Call>
  unsigned int Do(const Call& call) const
  {
    const unsigned int code = Choose();
    return code == RC_SUCCESS ? call() : code;
  }
  /// Asks one of the questions of CameraDescription.h about this camera.
  template <typename Value>
  TAnswer<Value> Ask(TAnswer<Value> (*question)()) const
  {
    if (const unsigned int code = Choose(); code != RC_SUCCESS)
      return {.function = kChoosing, .code = code, .value = std::nullopt};
    return question();
  }
  /// How many exposures make an image of the next run: the library counts timestamps in exposures.
  void CountExposures(long perImage) { exposuresPerImage_ = perImage; }
  const std::string& Error() const { return error_; }

  unsigned int Start() override;
  unsigned int Abort() override;
  unsigned int Wait(int timeoutMs) override;
  unsigned int Status(int& status) override;
  unsigned int AvailableImages(int& first, int& last) override;
  unsigned int TotalImages(long& count) override;
  unsigned int FetchImage(long number, PixelDepth depth, std::span<std::byte> pixels, long long& ticks) override;
  unsigned int Timestamp(long number, long long& ticks) override;
  unsigned int SendTrigger() override;
  std::optional<long> LostFrames() override;

private:
  static constexpr const char* kChoosing = "vxmcd_SetCurrentCameraOfThread";

  bool Check(const char* function, unsigned int code);

  std::string error_;
  long handle_ = 0;
  long exposuresPerImage_ = 1;
  bool isOpen_ = false;
};

/// Why there is no camera with this number; nothing when there is one. The text is "" as NoCameraListText() says.
std::optional<std::string> WhyNoCamera(int number);
/// What is wrong with the configuration of the simulated cameras, as they say on standard error, too; "" when nothing is
/// known to be.
std::string ConfigurationError();
/// Why the library cannot say which cameras there are; "" when the simulated cameras have said on standard error
/// what is wrong with their configuration.
std::string NoCameraListText(unsigned int code);

} // namespace vxtool
