// SPDX-License-Identifier: MIT
// One table for each word of the record.
#include "tools/CapabilityWords.h"

#include <cstdio>
#include <span>

namespace vxtool {

namespace {

struct TBitWord
{
  unsigned int bits;
  const char* word; // "": tells nothing
};

constexpr TBitWord kAcquisitionModes[] = {{VXMCD_ACQUISITION_SINGLE, "single"},
                                          {VXMCD_ACQUISITION_SERIES, "series"},
                                          {VXMCD_ACQUISITION_OVERLAP, "overlap"}};
constexpr TBitWord kReadModes[] = {
    {VXMCD_READ_FULL_IMAGE, "full image"}, {VXMCD_READ_SUB_IMAGE, "sub-image"}, {VXMCD_READ_TRACKS, "tracks"}};
constexpr TBitWord kTriggerModes[] = {{VXMCD_TRIGGER_INTERNAL, "internal"},
                                      {VXMCD_TRIGGER_EXTERNAL, "external"},
                                      {VXMCD_TRIGGER_SOFTWARE, "software"},
                                      {VXMCD_TRIGGER_EXTERNAL_START, "external-start"},
                                      {VXMCD_TRIGGER_EXTERNAL_EXPOSURE, "external-exposure"}};
constexpr TBitWord kSettable[] = {{VXMCD_SET_READOUT_RATE, "speed"},
                                  {VXMCD_SET_TEMPERATURE, "temperature"},
                                  {VXMCD_SET_BASELINE_CLAMP, "baseline clamp"},
                                  {VXMCD_SET_PRE_AMP_GAIN, "direct gain"},
                                  {VXMCD_SET_BINNING, "binning"},
                                  {VXMCD_SET_TRACKS, "tracks"},
                                  {VXMCD_SET_ALWAYS, ""}};
constexpr TBitWord kReadable[] = {{VXMCD_GET_TEMPERATURE, "temperature"}, {VXMCD_GET_ALWAYS, ""}};
constexpr TBitWord kFeatures[] = {{VXMCD_FEATURES_ALWAYS, ""},
                                  {VXMCD_FEATURE_FAN, "fan"},
                                  {VXMCD_FEATURE_FAN_LOW, "low fan"},
                                  {VXMCD_FEATURE_METADATA, "metadata"},
                                  {VXMCD_FEATURE_EXPOSURE_START_EVENT, "exposure start event"},
                                  {VXMCD_FEATURE_EXPOSURE_END_EVENT, "exposure end event"}};

std::vector<std::string> Words(unsigned int bits, std::span<const TBitWord> table)
{
  std::vector<std::string> words;
  for (const TBitWord& entry : table) {
    if ((bits & entry.bits) != 0 && entry.word[0] != '\0') words.emplace_back(entry.word);
    bits &= ~entry.bits;
  }
  for (unsigned int bit = 1; bit != 0; bit <<= 1) {
    if ((bits & bit) == 0) continue;
    char number[16];
    std::snprintf(number, sizeof number, "0x%x", bit);
    words.emplace_back(number);
  }
  return words;
}

std::string CameraType(unsigned int type)
{
  switch (type) {
  case VXMCD_CAMERA_TRELLIS:
    return "TRELLIS";
  case VXMCD_CAMERA_RQ512:
    return "RQ512";
  case VXMCD_CAMERA_KESTRA:
    return "KESTRA";
  case VXMCD_CAMERA_OTHER:
    return "other";
  default:
    return std::to_string(type);
  }
}

} // namespace

TCapabilityWords CapabilityWords(const vxmcd_Capabilities& capabilities)
{
  return {Words(capabilities.acquisitionModes, kAcquisitionModes),
          Words(capabilities.readModes, kReadModes),
          Words(capabilities.triggerModes, kTriggerModes),
          Words(capabilities.settableFunctions, kSettable),
          Words(capabilities.readableFunctions, kReadable),
          Words(capabilities.features, kFeatures),
          CameraType(capabilities.cameraType)};
}

} // namespace vxtool
