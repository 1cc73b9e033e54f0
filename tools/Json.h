// SPDX-License-Identifier: MIT
// What the tool prints for scripts, as JSON.
#pragma once

#include "tools/ImageData.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace vxtool {

/// Keeps keys in the order in which they are put in.
using Json = nlohmann::ordered_json;

/// One line with its line feed. Bytes that are not UTF-8, as file names may have, become U+FFFD.
std::string JsonLine(const Json& json);
/// A number of single precision with the digits that it is good for; null for infinity and for what is no number.
Json JsonNumber(float number);

template <typename Value>
Json JsonOrNull(const std::optional<Value>& value)
{
  return value ? Json(*value) : Json(nullptr);
}
/// Camera, start, shape, area and settings of a run; null for what is not known.
Json FactsJson(const TRunFacts& facts, const TImageShape& shape);
/// The same with the number of images, and whether that is final; the counts of the run where they are known.
Json FileJson(const TRunFacts& facts, const TImageShape& shape, std::size_t images, bool isComplete,
              const std::optional<TFrameCounts>& counts);
/// Adds the counts of a run.
void PutCounts(Json& json, const std::optional<TFrameCounts>& counts);
/// A number that the library has in single precision; null for nothing.
Json JsonOfSingle(const std::optional<double>& value);
/// Null for "".
Json JsonTextOrNull(const std::string& text);

} // namespace vxtool
