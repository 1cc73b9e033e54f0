// SPDX-License-Identifier: MIT
// The bits of the capability record as words.
#pragma once

#include "vxmcd.h"

#include <string>
#include <vector>

namespace vxtool {

/// The words of a capability record, in the order of the bits. Bits that every camera has and that tell nothing
/// have no word; bits that are not known appear as their number, "0x40".
struct TCapabilityWords
{
  std::vector<std::string> acquisitionModes;
  std::vector<std::string> readModes;
  std::vector<std::string> triggerModes;
  std::vector<std::string> settable;
  std::vector<std::string> readable;
  std::vector<std::string> features;
  std::string cameraType;
};

TCapabilityWords CapabilityWords(const vxmcd_Capabilities& capabilities);

} // namespace vxtool
