// SPDX-License-Identifier: MIT
// JSON by way of nlohmann's library.
#include "tools/JsonText.h"

#include <charconv>
#include <cmath>

namespace vxtool {

std::string JsonLine(const Json& json)
{
  return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

Json JsonNumber(float number)
{
  if (!std::isfinite(number)) return nullptr;
  char text[64];
  const auto written = std::to_chars(text, text + sizeof text, number);
  double value = 0.0;
  std::from_chars(text, written.ptr, value);
  return value;
}

} // namespace vxtool
