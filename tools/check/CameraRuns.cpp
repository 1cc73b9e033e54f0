// SPDX-License-Identifier: MIT
// Settings and runs of checks.
#include "tools/check/CameraRuns.h"

#include "utility/utf8.h"

#include <algorithm>
#include <chrono>

namespace vxtool {

namespace {

using TClock = std::chrono::steady_clock;

constexpr TImageSize kPart = {128, 96};
constexpr float kExposureSeconds = 0.001F;
constexpr int kImageLayout = 4; ///< read mode
constexpr double kSlackSeconds = 2.0;
constexpr int kWaitMs = 20;

// Calls of a loop are not noted: they would fill the list.
template <typename Condition>
bool WaitUntil(double seconds, const Condition& condition)
{
  const auto end = TClock::now() + std::chrono::duration<double>(seconds);
  while (!condition()) {
    TCheckContext::StopIfInterrupted();
    if (TClock::now() > end) return false;
    WaitForAcquisitionTimeOut(kWaitMs);
  }
  return true;
}

} // namespace

void MakeReady(TCheckContext& check)
{
  check.Need("SetCurrentCamera", CHECK_CALL(check, SetCurrentCamera, check.Handle()));
  check.Need("Initialize", CHECK_CALL(check, Initialize, nullptr));
  if (IsAcquiring(check)) { // a run that could not be ended is the failure of one check only
    CHECK_CALL(check, ShutDown);
    check.Need("Initialize", CHECK_CALL(check, Initialize, nullptr));
  }
  CHECK_CALL(check, SetTriggerMode, 0);
  CHECK_CALL(check, SetReadMode, kImageLayout);
  CHECK_CALL(check, SetNumberAccumulations, 1);
  CHECK_CALL(check, SetNumberKinetics, 1);
  CHECK_CALL(check, SetAcquisitionMode, 1);
  CHECK_CALL(check, SetMetaData, 1);
  SetPart(check, 1, 1, kPart);
  CHECK_CALL(check, SetExposureTime, kExposureSeconds);
  CHECK_CALL(check, SetKineticCycleTime, kExposureSeconds);
}

bool IsAcquiring(TCheckContext& check)
{
  int isAcquiring = 0;
  CHECK_CALL(check, VX_GetBool, check.FeatureHandle(), L"CameraAcquiring", &isAcquiring);
  return isAcquiring != 0;
}

TImageSize Sensor(TCheckContext& check)
{
  TImageSize size;
  check.Need("GetDetector", CHECK_CALL(check, GetDetector, &size.width, &size.height));
  return size;
}

TImageSize ImageSize(TCheckContext& check)
{
  const auto width = check.Int(L"AOIWidth");
  const auto height = check.Int(L"AOIHeight");
  check.Need("the camera does not say how large its images are", width && height);
  return {static_cast<int>(*width), static_cast<int>(*height)};
}

unsigned int SetPart(TCheckContext& check, int left, int top, TImageSize size)
{
  const TImageSize sensor = Sensor(check);
  return CHECK_CALL(check, SetImage, 1, 1, left, std::min(left + size.width - 1, sensor.width), top,
                    std::min(top + size.height - 1, sensor.height));
}

double CycleSeconds(TCheckContext& check)
{
  float exposure = 0.0F;
  float accumulate = 0.0F;
  float kinetic = 0.0F;
  CHECK_CALL(check, GetAcquisitionTimings, &exposure, &accumulate, &kinetic);
  return static_cast<double>(std::max({exposure, accumulate, kinetic}));
}

int Status(TCheckContext& check)
{
  int status = 0;
  check.Need("GetStatus", CHECK_CALL(check, GetStatus, &status));
  return status;
}

long TotalImages(TCheckContext& check)
{
  long count = 0;
  check.Need("GetTotalNumberImagesAcquired", CHECK_CALL(check, GetTotalNumberImagesAcquired, &count));
  return count;
}

void StartRun(TCheckContext& check, RunKind kind, int images)
{
  check.Need("SetAcquisitionMode", CHECK_CALL(check, SetAcquisitionMode, static_cast<int>(kind)));
  if (kind == RunKind::Series) check.Need("SetNumberKinetics", CHECK_CALL(check, SetNumberKinetics, images));
  check.Need("StartAcquisition", CHECK_CALL(check, StartAcquisition));
}

bool WaitForImages(TCheckContext& check, long images)
{
  const double seconds = CycleSeconds(check) * static_cast<double>(images) + kSlackSeconds;
  WaitUntil(seconds, [images] {
    long count = 0;
    int status = 0;
    return GetTotalNumberImagesAcquired(&count) != RC_SUCCESS || count >= images ||
           GetStatus(&status) != RC_SUCCESS || status != static_cast<int>(RC_ACQUIRING);
  });
  return TotalImages(check) >= images;
}

void UseUpWaits(TCheckContext& check)
{
  while (CHECK_CALL(check, WaitForAcquisitionTimeOut, 1) == RC_SUCCESS)
    ;
}

bool WaitUntilIdle(TCheckContext& check, long images)
{
  const double seconds = CycleSeconds(check) * static_cast<double>(images) + kSlackSeconds;
  WaitUntil(seconds, [] {
    int status = 0;
    return GetStatus(&status) != RC_SUCCESS || status != static_cast<int>(RC_ACQUIRING);
  });
  return Status(check) == static_cast<int>(RC_IDLE);
}

void TakeSeries(TCheckContext& check, int images)
{
  StartRun(check, RunKind::Series, images);
  const bool isIdle = WaitUntilIdle(check, images);
  const long total = TotalImages(check);
  check.Need("a series of " + std::to_string(images) + " gave " + std::to_string(total) +
                 (isIdle ? " images" : " images and did not end well"),
             isIdle && total == images);
}

std::vector<unsigned short> Image(TCheckContext& check, long number)
{
  std::vector<unsigned short> pixels(ImageSize(check).Pixels());
  long first = 0;
  long last = 0;
  check.Need("GetImages16",
             CHECK_CALL(check, GetImages16, number, number, pixels.data(), pixels.size(), &first, &last));
  return pixels;
}

std::vector<long long> Ticks(TCheckContext& check, long images)
{
  std::vector<unsigned short> pixels(ImageSize(check).Pixels());
  std::vector<long long> ticks;
  const long last = TotalImages(check);
  for (long image = last - images + 1; image <= last; ++image) {
    long long tick = 0;
    check.Need("vxmcd_GetIntactImage16",
               CHECK_CALL(check, vxmcd_GetIntactImage16, image, pixels.data(), pixels.size(), &tick));
    ticks.push_back(tick);
  }
  return ticks;
}

TEncoding::TEncoding(TCheckContext& check, const wchar_t* encoding) : handle_(check.FeatureHandle())
{
  before_ = FromUtf8(check.Word(L"PixelEncoding").value_or(""));
  isSet_ = CHECK_CALL(check, VX_SetEnumeratedString, handle_, L"PixelEncoding", encoding) == VX_SUCCESS;
}

TEncoding::~TEncoding()
{
  VX_SetEnumeratedString(handle_, L"PixelEncoding", before_.c_str());
}

} // namespace vxtool
