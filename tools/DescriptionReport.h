// SPDX-License-Identifier: MIT
// What a camera has answered, as text and as JSON.
#pragma once

#include "tools/CameraDescription.h"

#include <string>
#include <vector>

namespace vxtool {

/// The words for the trigger modes that a camera has.
std::vector<std::string> TriggerWords(const vxmcd_Capabilities& capabilities);
/// A line for each thing, with its line feed. A question that failed shows the name of its result code.
std::string DescriptionText(const TCameraDescription& description);
/// One line of JSON. What is not known is null; "errors" lists the calls that failed.
std::string DescriptionJson(const TCameraDescription& description);

} // namespace vxtool
