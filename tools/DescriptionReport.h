// SPDX-License-Identifier: MIT
// What a camera has told, for a person and for scripts.
#pragma once

#include "tools/CameraDescription.h"

#include <string>

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

/// A line for each thing, with its line feed. A question that failed shows the name of its result code.
std::string DescriptionText(const TCameraDescription& description);
/// One line of JSON. What could not be told is null; "errors" lists the calls that failed.
std::string DescriptionJson(const TCameraDescription& description);

} // namespace vxtool
