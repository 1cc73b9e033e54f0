// SPDX-License-Identifier: MIT
// What is known of each image, as arrays of whole numbers beside the images.
#pragma once

#include "tools/ImageData.h"

#include <cstdint>
#include <vector>

namespace vxtool {

/// A number that each image has.
struct TImageColumn
{
  const char* name;
  std::int64_t (*value)(const TImageLabel& label);

  std::vector<std::int64_t> Of(const std::vector<TImageLabel>& labels) const;
};

/// Number in the run; clocks of camera and host, -1 where they are not known; check: 1 right, -1 wrong, 0 unchecked.
inline constexpr TImageColumn kImageColumns[] = {
    {"number", [](const TImageLabel& label) { return std::int64_t{label.number}; }},
    {"ticks", [](const TImageLabel& label) { return std::int64_t{label.ticks.value_or(-1)}; }},
    {"host_ns", [](const TImageLabel& label) { return std::int64_t{label.hostNanoseconds.value_or(-1)}; }},
    {"check", [](const TImageLabel& label) {
       const ImageCheck check = label.check.value_or(ImageCheck::Unchecked);
       return std::int64_t{check == ImageCheck::Right ? 1 : check == ImageCheck::Wrong ? -1 : 0};
     }}};

} // namespace vxtool
