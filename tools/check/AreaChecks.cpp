// SPDX-License-Identifier: MIT
// Image areas, binning, tracks.
#include "tools/check/CameraRuns.h"
#include "tools/check/Checks.h"

#include <algorithm>

namespace vxtool {

namespace {

constexpr unsigned short kFill = 0xA5C3; ///< in arrays before images are copied
constexpr std::size_t kGuard = 64;       ///< pixels behind an array

// Takes an image, which must be of this size and end where its array ends.
void ExpectImageOf(TCheckContext& check, const std::string& what, TImageSize size)
{
  TCheckContext::ExpectEqual(what, size.Text(), ImageSize(check).Text());
  TakeSeries(check, 1);
  std::vector<unsigned short> pixels(size.Pixels() + kGuard, kFill);
  TCheckContext::ExpectCode(what + ": an array of " + size.Text() + " pixels", RC_SUCCESS,
                            CHECK_CALL(check, GetMostRecentImage16, pixels.data(), size.Pixels()));
  TCheckContext::Expect(
      std::all_of(pixels.end() - kGuard, pixels.end(), [](unsigned short p) { return p == kFill; }),
      what + ": memory behind the array", "untouched", "written to");
  TCheckContext::Expect(
      std::any_of(pixels.begin(), pixels.end() - kGuard, [](unsigned short p) { return p != kFill; }),
      what + ": the array", "an image", "untouched");
}

} // namespace

void TakesSmallestArea(TCheckContext& check)
{
  long long width = 0;
  long long height = 0;
  const int handle = check.FeatureHandle();
  check.Need("the camera does not say how small an area may be",
             CHECK_CALL(check, VX_GetIntMin, handle, L"AOIWidth", &width) == VX_SUCCESS &&
                 CHECK_CALL(check, VX_GetIntMin, handle, L"AOIHeight", &height) == VX_SUCCESS);
  const TImageSize smallest = {static_cast<int>(std::max(width, 1LL)), static_cast<int>(std::max(height, 1LL))};
  TCheckContext::ExpectCode("SetImage of the smallest area", RC_SUCCESS, SetPart(check, 1, 1, smallest));
  ExpectImageOf(check, "the smallest area", smallest);
}

void TakesAreasAtEdges(TCheckContext& check)
{
  constexpr TImageSize kOdd = {37, 23};
  const TImageSize sensor = Sensor(check);
  const TImageSize size = {std::min(kOdd.width, sensor.width), std::min(kOdd.height, sensor.height)};
  const int right = sensor.width - size.width + 1;
  const int bottom = sensor.height - size.height + 1;
  for (const auto& [left, top] :
       {std::pair{1, 1}, {right, 1}, {1, bottom}, {right, bottom}, {right / 2 + 1, bottom / 3 + 1}}) {
    const std::string what =
        "an area of " + size.Text() + " from " + std::to_string(left) + ", " + std::to_string(top);
    TCheckContext::ExpectCode(what, RC_SUCCESS, SetPart(check, left, top, size));
    TCheckContext::ExpectEqual(what + ": AOILeft", static_cast<long long>(left),
                               check.Int(L"AOILeft").value_or(0));
    TCheckContext::ExpectEqual(what + ": AOITop", static_cast<long long>(top), check.Int(L"AOITop").value_or(0));
    ExpectImageOf(check, what, size);
  }
}

void TakesBinnedAreas(TCheckContext& check)
{
  const TImageSize sensor = Sensor(check);
  int taken = 0;
  for (const int factor : {2, 3, 4, 8}) {
    const TImageSize binned = {std::min(32, sensor.width / factor), std::min(24, sensor.height / factor)};
    if (binned.Pixels() == 0) continue;
    const unsigned int code =
        CHECK_CALL(check, SetImage, factor, factor, 1, binned.width * factor, 1, binned.height * factor);
    const bool isSquare = !check.HasFeature(L"AOIHBin");
    const bool isTaken = isSquare
                             ? check.Word(L"AOIBinning") == std::to_string(factor) + "x" + std::to_string(factor)
                             : check.Int(L"AOIHBin") == factor && check.Int(L"AOIVBin") == factor;
    if (!isTaken) continue; // the camera does not have it, which SetImage() does not report
    ++taken;
    const std::string what = "an area with binning " + std::to_string(factor);
    TCheckContext::ExpectCode(what, RC_SUCCESS, code);
    ExpectImageOf(check, what, binned);
  }
  if (taken == 0) TCheckContext::Skip("the camera has no binning by 2, 3, 4 or 8");
}

void RefusesAreasOutside(TCheckContext& check)
{
  const TImageSize sensor = Sensor(check);
  const auto set = [&check](int left, int right, int top, int bottom) {
    return CHECK_CALL(check, SetImage, 1, 1, left, right, top, bottom);
  };
  TCheckContext::ExpectCode("an area wider than the sensor", RC_P4_INVALID,
                            set(1, sensor.width + 1, 1, sensor.height));
  TCheckContext::ExpectCode("an area higher than the sensor", RC_P5_INVALID,
                            set(1, sensor.width, 1, sensor.height + 1));
  TCheckContext::ExpectCode("an area that begins right of the sensor", RC_P3_INVALID,
                            set(sensor.width + 1, sensor.width + 16, 1, 16));
  TCheckContext::ExpectCode("an area that begins below the sensor", RC_P6_INVALID,
                            set(1, 16, sensor.height + 1, sensor.height + 16));
  TCheckContext::ExpectCode("binning by 0", RC_P1_INVALID,
                            CHECK_CALL(check, SetImage, 0, 1, 1, sensor.width, 1, sensor.height));
}

void ShowsSamePixels(TCheckContext& check)
{
  const TImageSize sensor = Sensor(check);
  check.Need("SetImage", SetPart(check, 1, 1, sensor));
  TakeSeries(check, 2);
  const std::vector<unsigned short> whole = Image(check, 1);
  if (whole != Image(check, 2)) TCheckContext::Skip("two images differ: noise or motion hides it");
  if (std::adjacent_find(whole.begin(), whole.end(), std::not_equal_to<>()) == whole.end())
    TCheckContext::Skip("all pixels are alike");
  const TImageSize size = {sensor.width / 3, sensor.height / 3};
  const int left = sensor.width / 4;
  const int top = sensor.height / 5;
  check.Need("SetImage", SetPart(check, left + 1, top + 1, size));
  TakeSeries(check, 1);
  const std::vector<unsigned short> part = Image(check, 1);
  const auto width = static_cast<std::size_t>(size.width);
  for (std::size_t row = 0; row < static_cast<std::size_t>(size.height); ++row) {
    const auto* const expected =
        &whole[(static_cast<std::size_t>(top) + row) * static_cast<std::size_t>(sensor.width) +
               static_cast<std::size_t>(left)];
    TCheckContext::Expect(std::equal(expected, expected + width, &part[row * width]),
                          "row " + std::to_string(row + 1) + " of a part of the sensor", "as in the whole image",
                          "other pixels");
  }
}

void TakesTracks(TCheckContext& check)
{
  int areas[] = {2, 3, 5, 8, 10, 10};
  const TImageSize sensor = Sensor(check);
  TCheckContext::ExpectCode("SetReadMode of tracks", RC_SUCCESS, CHECK_CALL(check, SetReadMode, 2));
  if (check.Word(L"AOILayout") != "Track" || sensor.height < 10)
    TCheckContext::Skip("the camera has no layout with tracks");
  TCheckContext::ExpectCode("SetRandomTracks", RC_SUCCESS, CHECK_CALL(check, SetRandomTracks, 3, areas));
  ExpectImageOf(check, "an image of 3 tracks", {ImageSize(check).width, 3});
}

} // namespace vxtool
