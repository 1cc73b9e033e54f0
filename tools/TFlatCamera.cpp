// SPDX-License-Identifier: MIT
// Calls of the library on behalf of the tool.
#include "tools/TFlatCamera.h"

#include "tools/Messages.h"
#include "vxcore.h"
#include "vxmcd.h"

#include <climits>
#include <dlfcn.h>

namespace vxtool {

namespace {
constexpr long kFirstHandle = 101;
} // namespace

TFlatCamera::~TFlatCamera()
{
  if (isOpen_) Do(ShutDown);
}

bool TFlatCamera::Check(const char* function, unsigned int code)
{
  if (code == RC_SUCCESS) return true;
  error_ = ResultText(function, code);
  return false;
}

bool TFlatCamera::Open(int number)
{
  const std::optional<std::string> problem = WhyNoCamera(number);
  if (problem) {
    error_ = *problem;
    return false;
  }
  handle_ = kFirstHandle + number;
  isOpen_ = Check(kChoosing, Choose()) && Check("Initialize", Initialize(nullptr));
  return isOpen_;
}

unsigned int TFlatCamera::Start()
{
  return Do(StartAcquisition);
}
unsigned int TFlatCamera::Abort()
{
  return Do(AbortAcquisition);
}
unsigned int TFlatCamera::Wait(int timeoutMs)
{
  return WaitForAcquisitionByHandleTimeOut(handle_, timeoutMs);
}
unsigned int TFlatCamera::Status(int& status)
{
  return Do([&] { return GetStatus(&status); });
}
unsigned int TFlatCamera::AvailableImages(int& first, int& last)
{
  return Do([&] { return GetNumberAvailableImages(&first, &last); });
}
unsigned int TFlatCamera::TotalImages(long& count)
{
  return Do([&] { return GetTotalNumberImagesAcquired(&count); });
}
unsigned int TFlatCamera::SendTrigger()
{
  return Do(SendSoftwareTrigger);
}

unsigned int TFlatCamera::FetchImage(long number, PixelDepth depth, std::span<std::byte> pixels, long long& ticks)
{
  const unsigned long size = pixels.size() / (static_cast<std::size_t>(depth) / 8);
  void* const target = pixels.data();
  return Do([&] {
    if (depth == PixelDepth::Bits8)
      return vxmcd_GetIntactImage8(number, static_cast<unsigned char*>(target), size, &ticks);
    if (depth == PixelDepth::Bits16)
      return vxmcd_GetIntactImage16(number, static_cast<unsigned short*>(target), size, &ticks);
    return vxmcd_GetIntactImage(number, static_cast<int*>(target), size, &ticks);
  });
}

unsigned int TFlatCamera::Timestamp(long number, long long& ticks)
{
  const long index = (number - 1) * exposuresPerImage_;
  if (index > static_cast<long>(UINT_MAX)) return RC_FEATURE_ERROR;
  unsigned int count = 0;
  return Do([&] { return vxsys_GetRawMetaDataInfo(&count, &ticks, static_cast<unsigned int>(index)); });
}

std::optional<long> TFlatCamera::LostFrames()
{
  int handle = VX_HANDLE_NONE;
  long long count = 0;
  if (Do([&] { return GetSDK3Handle(&handle); }) != RC_SUCCESS ||
      VX_GetInt(handle, L"FramesLost", &count) != VX_SUCCESS)
    return std::nullopt;
  return static_cast<long>(count);
}

std::optional<std::string> WhyNoCamera(int number)
{
  long count = 0;
  if (const unsigned int code = GetAvailableCameras(&count); code != RC_SUCCESS) return NoCameraListText(code);
  if (number < count) return std::nullopt;
  const std::string missing =
      "there is no camera " + std::to_string(number) + ": " + std::to_string(count) + " attached";
  return count == 0 ? missing
                    : missing + ", counted from 0; --camera serial:" + std::to_string(number) +
                          " is the one with this serial number";
}

// Only the feature library with the simulated cameras has this function (vxcore_simulator.h).
std::string ConfigurationError()
{
  using LastError = const char* (*)();
  const auto lastError = reinterpret_cast<LastError>(dlsym(RTLD_DEFAULT, "VXSIM_GetLastError"));
  return lastError ? lastError() : "";
}

std::string NoCameraListText(unsigned int code)
{
  return !ConfigurationError().empty() ? "" : ResultText("GetAvailableCameras", code);
}

} // namespace vxtool
