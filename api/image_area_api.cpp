// SPDX-License-Identifier: MIT
// The sensor and the image area on it.
#include "api/call_log.h"
#include "api/entry_points.h"
#include "api/TCameraUse.h"
#include "features/feature_access.h"
#include "features/feature_names.h"
#include "utility/outputs.h"
#include "utility/TQuorinMisc.h"
#include "vxmcd.h"

#include <cstdint>
#include <iterator>

namespace EntryPoint {

namespace {

// Leaves the output as it is when the read fails.
bool Read(int coreHandle, const wchar_t* feature, int* output)
{
  long long value = 0;
  if (ReadInt(coreHandle, feature, value) != VX_SUCCESS) return false;
  WriteOutput(output, value);
  return true;
}

bool Write(int coreHandle, const wchar_t* feature, std::int64_t value)
{
  return WriteInt(coreHandle, feature, value) == VX_SUCCESS;
}

bool IsOutOfRange(int coreHandle, const wchar_t* feature, std::int64_t value)
{
  return WriteInt(coreHandle, feature, value) == VX_ERR_OUT_OF_RANGE;
}

// From the first to the last pixel, both included.
std::int64_t Extent(int first, int last)
{
  return std::int64_t{last} - first + 1;
}

// Switches the layout for its lifetime and then restores the earlier one.
class TLayoutSwitch
{
public:
  TLayoutSwitch(int coreHandle, const wchar_t* layout) : coreHandle_(coreHandle)
  {
    isKnown_ = ReadIndex(coreHandle, Feature::kAOILayout, index_) == VX_SUCCESS;
    WriteText(coreHandle, Feature::kAOILayout, layout);
  }
  ~TLayoutSwitch()
  {
    if (isKnown_) WriteIndex(coreHandle_, Feature::kAOILayout, index_);
  }
  TLayoutSwitch(const TLayoutSwitch&) = delete;
  TLayoutSwitch& operator=(const TLayoutSwitch&) = delete;

private:
  int coreHandle_;
  int index_ = 0;
  bool isKnown_ = false;
};

// Binning factors. Each function returns the feature library's code; for a factor out of range, the result code of its
// argument.
constexpr int OutOfRangeAs(int code, int resultCode)
{
  return code == VX_ERR_OUT_OF_RANGE ? resultCode : code;
}

int setHorizontalBinning(int coreHandle, int bin)
{
  return OutOfRangeAs(WriteInt(coreHandle, Feature::kAOIHBin, bin), RC_P1_INVALID);
}

int setVerticalBinning(int coreHandle, int bin)
{
  return OutOfRangeAs(WriteInt(coreHandle, Feature::kAOIVBin, bin), RC_P2_INVALID);
}

// Square binning by its text, "2x2".
int setCombinedBinning(int coreHandle, int bin)
{
  wchar_t text[256] = {};
  QuorinUtility::TQuorinMisc::snwprintf(text, std::size(text), L"%dx%d", bin, bin);
  return OutOfRangeAs(WriteText(coreHandle, Feature::kAOIBinning, text), RC_P1_INVALID);
}

// A camera without separate factors gets square binning by the horizontal one.
int setBinningOptions(int coreHandle, int hbin, int vbin)
{
  if (setHorizontalBinning(coreHandle, hbin) == VX_ERR_NOT_IMPLEMENTED)
    return setCombinedBinning(coreHandle, hbin);
  return setVerticalBinning(coreHandle, vbin);
}

// Rows count from the sensor's last row. Each track is read out as one binned row.
bool WriteTrack(int coreHandle, int sensorHeight, int firstRow, int lastRow)
{
  return Write(coreHandle, Feature::kAOITop, std::int64_t{sensorHeight} + 1 - lastRow) &&
         Write(coreHandle, Feature::kAOIVBin, Extent(firstRow, lastRow));
}

} // namespace

unsigned int GetDetector(int* xpixels, int* ypixels)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  const bool hasHeight = Read(camera.CoreHandle(), Feature::kSensorHeight, ypixels);
  const bool hasWidth = Read(camera.CoreHandle(), Feature::kSensorWidth, xpixels);
  if (!hasWidth) return RC_P1_INVALID;
  if (!hasHeight) return RC_P2_INVALID;
  return RC_SUCCESS;
}

unsigned int SetImage(int hbin, int vbin, int hstart, int hend, int vstart, int vend)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (hbin < 1) return Refuse(RC_P1_INVALID, "binning begins at 1");
  if (vbin < 1) return Refuse(RC_P2_INVALID, "binning begins at 1");

  const TLayoutSwitch layout(camera.CoreHandle(), FeatureText::kImage);
  setBinningOptions(camera.CoreHandle(), hbin, vbin); // its result is not used: width and height show a failure
  const bool isWidthWrong = IsOutOfRange(camera.CoreHandle(), Feature::kAOIWidth, Extent(hstart, hend) / hbin);
  const bool isLeftWrong = IsOutOfRange(camera.CoreHandle(), Feature::kAOILeft, hstart);
  int sensorHeight = 0;
  Read(camera.CoreHandle(), Feature::kSensorHeight, &sensorHeight); // not needed; kept as a call to the camera
  const bool isHeightWrong = IsOutOfRange(camera.CoreHandle(), Feature::kAOIHeight, Extent(vstart, vend) / vbin);
  const bool isTopWrong = IsOutOfRange(camera.CoreHandle(), Feature::kAOITop, vstart);

  if (isTopWrong) return RC_P6_INVALID;
  if (isHeightWrong) return RC_P5_INVALID;
  if (isLeftWrong) return RC_P3_INVALID;
  if (isWidthWrong) return RC_P4_INVALID;
  return RC_SUCCESS;
}

unsigned int SetRandomTracks(int numTracks, int* areas)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!isImplemented(camera.CoreHandle(), Feature::kAOILayout)) return RC_NOT_SUPPORTED;
  if (!areas && numTracks > 0) return RC_P2_INVALID;

  const TLayoutSwitch layout(camera.CoreHandle(), FeatureText::kTrack);
  if (!Write(camera.CoreHandle(), Feature::kAOICount, numTracks)) return RC_P1_INVALID;
  int sensorHeight = 0;
  Read(camera.CoreHandle(), Feature::kSensorHeight, &sensorHeight);
  bool isGood = true;
  for (int track = 1; track <= numTracks; ++track) {
    Write(camera.CoreHandle(), Feature::kAOISelector, track);
    Write(camera.CoreHandle(), Feature::kAOIHBin, 1);
    // The camera counts tracks from the sensor's last row: the last pair belongs to its first track.
    const int* const pair = areas + 2 * std::int64_t{numTracks - track};
    if (isGood) isGood = WriteTrack(camera.CoreHandle(), sensorHeight, pair[0], pair[1]);
  }
  return isGood ? RC_SUCCESS : RC_P2_INVALID;
}

unsigned int GetMaximumBinning(int /*readMode*/, int horzVert, int* maxBinning)
{
  constexpr unsigned int kDone = 0; // not RC_SUCCESS: callers rely on it
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (horzVert != 0 && horzVert != 1) return Refuse(RC_P2_INVALID, "the directions are 0 and 1");
  if (!maxBinning) return RC_P3_INVALID;
  *maxBinning = 1;
  const wchar_t* const feature = horzVert == 0 ? Feature::kAOIHBinInternal : Feature::kAOIVBinInternal;
  if (!isImplemented(camera.CoreHandle(), feature)) return kDone;
  long long maximum = 0;
  if (ReadIntMax(camera.CoreHandle(), feature, maximum) != VX_SUCCESS) return RC_BINNING_QUERY_FAILED;
  *maxBinning = static_cast<int>(maximum);
  return kDone;
}

} // namespace EntryPoint
