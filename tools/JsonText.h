// SPDX-License-Identifier: MIT
// What the tool prints for scripts.
#pragma once

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

} // namespace vxtool
