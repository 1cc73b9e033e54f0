// SPDX-License-Identifier: MIT
// What is known of a run and its images, for scripts.
#pragma once

#include "tools/ImageData.h"
#include "tools/JsonText.h"

namespace vxtool {

/// Camera, start, shape, area and settings of a run; null for what is not known.
Json FactsJson(const TRunFacts& facts, const TImageShape& shape);
/// A number that the library has in single precision; null for nothing.
Json JsonOfSingle(const std::optional<double>& value);
/// Null for "".
Json JsonTextOrNull(const std::string& text);

} // namespace vxtool
