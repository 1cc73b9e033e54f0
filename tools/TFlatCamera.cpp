// SPDX-License-Identifier: MIT
// Calls of the library on behalf of the tool.
#include "tools/TFlatCamera.h"

#include "tools/ResultText.h"
#include "vxmcd.h"

#include <climits>
#include <cmath>

namespace vxtool {

namespace {
constexpr long kFirstHandle = 101;
constexpr int kReadModeImage = 4;
constexpr double kNoticeable = 0.01; // a setting that is off by more than this part is worth a note
} // namespace

TFlatCamera::~TFlatCamera()
{
  if (isOpen_) ShutDown();
}

bool TFlatCamera::Check(const char* function, unsigned int code)
{
  if (code == RC_SUCCESS) return true;
  error_ = ResultText(function, code);
  return false;
}

bool TFlatCamera::Open(int number)
{
  long count = 0;
  if (!Check("GetAvailableCameras", GetAvailableCameras(&count))) return false;
  if (number >= count) {
    error_ = "there is no camera " + std::to_string(number) + ": " + std::to_string(count) + " attached";
    return false;
  }
  if (!Check("SetCurrentCamera", SetCurrentCamera(kFirstHandle + number))) return false;
  isOpen_ = Check("Initialize", Initialize(nullptr));
  return isOpen_;
}

bool TFlatCamera::SetUp(const TAcquireOptions& options)
{
  return Check("SetReadMode", SetReadMode(kReadModeImage)) &&
         Check("SetTriggerMode", SetTriggerMode(static_cast<int>(options.trigger))) && SetCounts(options) &&
         Check("SetAcquisitionMode",
               SetAcquisitionMode(static_cast<int>(options.mode.value_or(RunMode::Single)))) &&
         (!options.isOverlapped || Check("SetOverlapMode", SetOverlapMode(1))) && SetTimes(options);
}

bool TFlatCamera::SetCounts(const TAcquireOptions& options)
{
  accumulations_ = options.accumulations;
  const unsigned int code = SetNumberAccumulations(options.accumulations);
  const bool isPlain = options.accumulations == 1 && code == RC_NOT_SUPPORTED;
  if (!isPlain && !Check("SetNumberAccumulations", code)) return false;
  if (options.mode != RunMode::Series) return true;
  const long frames = options.frames.value_or(1);
  if (frames > INT_MAX) return Check("SetNumberKinetics", RC_P1_INVALID);
  return Check("SetNumberKinetics", SetNumberKinetics(static_cast<int>(frames)));
}

bool TFlatCamera::SetTimes(const TAcquireOptions& options)
{
  if (options.exposureSeconds &&
      !Check("SetExposureTime", SetExposureTime(static_cast<float>(*options.exposureSeconds))))
    return false;
  const bool isBurst = options.mode == RunMode::Accumulate;
  if (options.cycleSeconds) {
    const auto seconds = static_cast<float>(*options.cycleSeconds);
    const bool isSet = isBurst ? Check("SetAccumulationCycleTime", SetAccumulationCycleTime(seconds))
                               : Check("SetKineticCycleTime", SetKineticCycleTime(seconds));
    if (!isSet) return false;
  }
  float exposure = 0.0F;
  float accumulate = 0.0F;
  float kinetic = 0.0F;
  if (!Check("GetAcquisitionTimings", GetAcquisitionTimings(&exposure, &accumulate, &kinetic))) return false;
  exposureSeconds_ = exposure;
  cycleSeconds_ = isBurst ? accumulate : kinetic;
  const auto note = [this](const char* what, const std::optional<double>& asked, double got) {
    if (asked && std::fabs(got - *asked) > kNoticeable * *asked)
      notes_ += std::string(what) + " is " + std::to_string(got) + " s: the camera's nearest to what was asked\n";
  };
  note("the exposure", options.exposureSeconds, exposureSeconds_);
  if (options.trigger == Trigger::Internal) note("the cycle", options.cycleSeconds, cycleSeconds_);
  return true;
}

bool TFlatCamera::SensorSize(int& width, int& height)
{
  return Check("GetDetector", GetDetector(&width, &height));
}

double TFlatCamera::ReadoutSeconds() const
{
  float seconds = 0.0F;
  return GetReadOutTime(&seconds) == RC_SUCCESS ? seconds : 0.0;
}

unsigned int TFlatCamera::Start()
{
  return StartAcquisition();
}
unsigned int TFlatCamera::Abort()
{
  return AbortAcquisition();
}
unsigned int TFlatCamera::Wait(int timeoutMs)
{
  return WaitForAcquisitionTimeOut(timeoutMs);
}
unsigned int TFlatCamera::Status(int& status)
{
  return GetStatus(&status);
}
unsigned int TFlatCamera::AvailableImages(int& first, int& last)
{
  return GetNumberAvailableImages(&first, &last);
}
unsigned int TFlatCamera::TotalImages(long& count)
{
  return GetTotalNumberImagesAcquired(&count);
}
unsigned int TFlatCamera::SendTrigger()
{
  return SendSoftwareTrigger();
}

unsigned int TFlatCamera::FetchImage(long number, PixelDepth depth, std::span<std::byte> pixels)
{
  const unsigned long size = pixels.size() / (static_cast<std::size_t>(depth) / 8);
  long first = 0;
  long last = 0;
  void* target = pixels.data();
  if (depth == PixelDepth::Bits8)
    return GetImages8(number, number, static_cast<unsigned char*>(target), size, &first, &last);
  if (depth == PixelDepth::Bits16)
    return GetImages16(number, number, static_cast<unsigned short*>(target), size, &first, &last);
  return GetImages(number, number, static_cast<int*>(target), size, &first, &last);
}

unsigned int TFlatCamera::Timestamp(long number, unsigned int& count, long long& ticks)
{
  const long index = (number - 1) * accumulations_; // the library counts in exposures
  if (index > static_cast<long>(UINT_MAX)) return RC_FEATURE_ERROR;
  return vxsys_GetRawMetaDataInfo(&count, &ticks, static_cast<unsigned int>(index));
}

} // namespace vxtool
