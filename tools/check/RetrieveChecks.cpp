// SPDX-License-Identifier: MIT
// Copies of images.
#include "tools/check/CameraRuns.h"
#include "tools/check/Checks.h"

#include <algorithm>

namespace vxtool {

namespace {

constexpr unsigned short kFill = 0xA5C3;
constexpr double kMaxOverrunSeconds = 5.0;

using TPixels = std::vector<unsigned short>;

void ExpectSame(const std::string& what, const TPixels& expected, const TPixels& actual)
{
  const auto [at, other] = std::mismatch(expected.begin(), expected.end(), actual.begin());
  if (at == expected.end()) return;
  TCheckContext::Fail(what + ", pixel " + std::to_string(at - expected.begin()), std::to_string(*at),
                      std::to_string(*other));
}

} // namespace

void RetrievesAlike(TCheckContext& check)
{
  constexpr int kImages = 5;
  TakeSeries(check, kImages);
  const std::size_t size = ImageSize(check).Pixels();
  TPixels all(size * kImages);
  TCheckContext::ExpectCode("GetAcquiredData16", RC_SUCCESS,
                            CHECK_CALL(check, GetAcquiredData16, all.data(), size));
  TPixels pixels(size);
  for (int image = 1; image <= kImages; ++image) {
    const std::string of = " of image " + std::to_string(image);
    const TPixels expected(all.begin() + (image - 1) * static_cast<std::ptrdiff_t>(size),
                           all.begin() + image * static_cast<std::ptrdiff_t>(size));
    TCheckContext::ExpectCode("GetOldestImage16" + of, RC_SUCCESS,
                              CHECK_CALL(check, GetOldestImage16, pixels.data(), size));
    ExpectSame("GetOldestImage16" + of, expected, pixels);
    long long ticks = 0;
    TCheckContext::ExpectCode("vxmcd_GetIntactImage16" + of, RC_SUCCESS,
                              CHECK_CALL(check, vxmcd_GetIntactImage16, image, pixels.data(), size, &ticks));
    ExpectSame("vxmcd_GetIntactImage16" + of, expected, pixels);
    long first = 0;
    long last = 0;
    TCheckContext::ExpectCode("GetImages16" + of, RC_SUCCESS,
                              CHECK_CALL(check, GetImages16, image, image, pixels.data(), size, &first, &last));
    ExpectSame("GetImages16" + of, expected, pixels);
  }
  TCheckContext::ExpectCode("GetOldestImage16 after the last image", RC_NO_NEW_DATA,
                            CHECK_CALL(check, GetOldestImage16, pixels.data(), size));
  TCheckContext::ExpectCode("GetMostRecentImage16", RC_SUCCESS,
                            CHECK_CALL(check, GetMostRecentImage16, pixels.data(), size));
  ExpectSame("GetMostRecentImage16", TPixels(all.end() - static_cast<std::ptrdiff_t>(size), all.end()), pixels);
}

void RefusesWrongArrays(TCheckContext& check)
{
  TakeSeries(check, 1);
  const unsigned long size = ImageSize(check).Pixels();
  TPixels pixels(size + 2, kFill);
  long long ticks = 0;
  for (const unsigned long wrong : {size - 1, size + 1, 0UL}) {
    const std::string of = " of an array of " + std::to_string(wrong) + " pixels";
    TCheckContext::ExpectCode("GetMostRecentImage16" + of, RC_P2_INVALID,
                              CHECK_CALL(check, GetMostRecentImage16, pixels.data(), wrong));
    TCheckContext::ExpectCode("GetOldestImage16" + of, RC_P2_INVALID,
                              CHECK_CALL(check, GetOldestImage16, pixels.data(), wrong));
    TCheckContext::ExpectCode("GetAcquiredData16" + of, RC_P2_INVALID,
                              CHECK_CALL(check, GetAcquiredData16, pixels.data(), wrong));
    TCheckContext::ExpectCode("vxmcd_GetIntactImage16" + of, RC_P3_INVALID,
                              CHECK_CALL(check, vxmcd_GetIntactImage16, 1, pixels.data(), wrong, &ticks));
  }
  TCheckContext::ExpectCode("GetMostRecentImage16 without an array", RC_P1_INVALID,
                            CHECK_CALL(check, GetMostRecentImage16, nullptr, size));
  TCheckContext::Expect(
      std::all_of(pixels.begin(), pixels.end(), [](unsigned short pixel) { return pixel == kFill; }),
      "the array after refusals", "untouched", "written to");
}

void RetrievesBitsAlike(TCheckContext& check)
{
  const std::size_t size = ImageSize(check).Pixels();
  std::vector<int> wide(size);
  TakeSeries(check, 1);
  TCheckContext::ExpectCode("GetMostRecentImage", RC_SUCCESS,
                            CHECK_CALL(check, GetMostRecentImage, wide.data(), size));
  TPixels expected(size);
  std::transform(wide.begin(), wide.end(), expected.begin(),
                 [](int pixel) { return static_cast<unsigned short>(pixel); });
  ExpectSame("16 bits", expected, Image(check, 1));
  const TEncoding mono8(check, L"Mono8");
  std::vector<unsigned char> narrow(size);
  if (!mono8.IsSet()) {
    TCheckContext::ExpectCode("8 bits of another encoding than Mono8", RC_NOT_SUPPORTED,
                              CHECK_CALL(check, GetMostRecentImage8, narrow.data(), size));
    return;
  }
  TakeSeries(check, 1);
  TCheckContext::ExpectCode("GetMostRecentImage8", RC_SUCCESS,
                            CHECK_CALL(check, GetMostRecentImage8, narrow.data(), size));
  ExpectSame("8 bits", Image(check, 1), TPixels(narrow.begin(), narrow.end()));
}

void NeverRetrievesOldImages(TCheckContext& check)
{
  check.Need("SetImage", SetPart(check, 1, 1, Sensor(check)));
  long budget = 0;
  check.Need("GetSizeOfCircularBuffer", CHECK_CALL(check, GetSizeOfCircularBuffer, &budget));
  const long bytes = static_cast<long>(check.Int(L"ImageSizeBytes").value_or(0));
  check.Need("the camera does not say how long an image is", bytes > 0);
  const long ring = std::max(budget / bytes, 3L);
  const long images = ring + ring / 4 + 2;
  if (static_cast<double>(images) * CycleSeconds(check) > kMaxOverrunSeconds)
    TCheckContext::Skip("it would take " +
                        TCheckContext::Shown(static_cast<double>(images) * CycleSeconds(check)) +
                        " s until images are overwritten");
  StartRun(check, RunKind::UntilAborted);
  if (!WaitForImages(check, images)) TCheckContext::Skip("images come too slowly: none is overwritten in time");
  const std::size_t size = ImageSize(check).Pixels();
  TPixels pixels(size, kFill);
  long long ticks = 0;
  TCheckContext::ExpectCode("image 1, which was overwritten", RC_NO_NEW_DATA,
                            CHECK_CALL(check, vxmcd_GetIntactImage16, 1, pixels.data(), size, &ticks));
  check.Need("AbortAcquisition", CHECK_CALL(check, AbortAcquisition));
  int first = 0;
  int last = 0;
  TCheckContext::ExpectCode("GetNumberAvailableImages", RC_SUCCESS,
                            CHECK_CALL(check, GetNumberAvailableImages, &first, &last));
  TCheckContext::Expect(first > 1 && last - first < ring, "images that are there",
                        std::to_string(ring) + " at most, without the first",
                        std::to_string(first) + " to " + std::to_string(last));
  TCheckContext::ExpectEqual("the last image that is there", TotalImages(check), static_cast<long>(last));
  long validFirst = 0;
  long validLast = 0;
  TCheckContext::ExpectCode("GetImages16 of image 1", RC_NO_NEW_DATA,
                            CHECK_CALL(check, GetImages16, 1, 1, pixels.data(), size, &validFirst, &validLast));
}

void FreesImages(TCheckContext& check)
{
  TakeSeries(check, 2);
  const std::size_t size = ImageSize(check).Pixels();
  TPixels pixels(size, kFill);
  long long ticks = 0;
  TCheckContext::ExpectCode("FreeInternalMemory", RC_SUCCESS, CHECK_CALL(check, FreeInternalMemory));
  TCheckContext::ExpectCode("an image that was freed", RC_NO_NEW_DATA,
                            CHECK_CALL(check, vxmcd_GetIntactImage16, 1, pixels.data(), size, &ticks));
  TPixels untouched(size, kFill);
  CHECK_CALL(check, GetOldestImage16, untouched.data(), size);
  ExpectSame("the array of an image that was freed", TPixels(size, kFill), untouched);
  TakeSeries(check, 2);
  Image(check, 2);
}

} // namespace vxtool
