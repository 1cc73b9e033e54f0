// SPDX-License-Identifier: MIT
// Calls of a trace as texts.
#include "tools/TraceText.h"

#include "tools/Messages.h"
#include "vxcore.h"
#include "vxmcd_result_codes.h"

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace vxtool {

namespace {

constexpr struct
{
  std::uint32_t code;
  const char* name;
} kCoreCodes[] = {
#define VX_CODE(name, meaning) {name, #name},
#include "vxcore/result_codes.def"
};

// The library's own function would be a call, which may be traced: into the file that is read here.
constexpr struct
{
  std::uint32_t code;
  const char* name;
} kApiCodes[] = {
#define ROW(name, code, meaning, advice) {code, #name},
    VXMCD_RESULT_CODES(ROW)
#undef ROW
};

std::string UtcText(std::uint64_t ns)
{
  const auto seconds = static_cast<std::time_t>(ns / 1'000'000'000);
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  char text[32];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

} // namespace

std::string CallText(const TTraceCall& call)
{
  std::string text = call.function->name + "(";
  const auto values = call.Values();
  const auto& arguments = call.function->signature.Arguments();
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i > 0) text += ", ";
    if (call.function->isApi) text += arguments[i].name + "=";
    text += values[i].Text();
  }
  return text + ")";
}

std::string MarkedLine(const char* mark, const TTraceCall& call)
{
  return std::string(mark) + " T" + std::to_string(call.thread) + " " +
         std::string(std::size_t{2} * std::min(call.depth, 20U), ' ') + CallText(call) + " = " + ResultOf(call) +
         "\n";
}

std::string CodeText(bool isApi, std::uint32_t code)
{
  const auto nameIn = [code](const auto& rows) {
    for (const auto& row : rows)
      if (row.code == code) return std::string(" ") + row.name;
    return std::string();
  };
  return std::to_string(code) + (isApi ? nameIn(kApiCodes) : nameIn(kCoreCodes));
}

std::string ResultOf(const TTraceCall& call)
{
  switch (call.state) {
  case CallState::Open:
    return "?  did not return";
  case CallState::Thrown:
    return "?  was left by an exception";
  case CallState::Unknown:
    return "?  its end is not in the trace";
  case CallState::Ended:
    break;
  }
  const TraceType type = call.function->signature.Result().type;
  if (type == TraceType::Void) return "";
  if (type != TraceType::Code && type != TraceType::Status) return call.Result().Text();
  return CodeText(type == TraceType::Code, call.Code());
}

std::string DurationText(double seconds)
{
  char text[32];
  if (seconds < 1e-3)
    std::snprintf(text, sizeof text, "%.1f us", seconds * 1e6);
  else if (seconds < 1.0)
    std::snprintf(text, sizeof text, "%.1f ms", seconds * 1e3);
  else
    std::snprintf(text, sizeof text, "%.2f s", seconds);
  return text;
}

Json ValueJson(const TTraceValue& value)
{
  switch (value.kind) {
  case TTraceValue::Kind::Signed:
    return value.whole;
  case TTraceValue::Kind::Unsigned:
    return static_cast<std::uint64_t>(value.whole);
  case TTraceValue::Kind::Real:
    return value.isSingle ? JsonNumber(static_cast<float>(value.real)) : Json(value.real);
  case TTraceValue::Kind::Text:
    return value.text;
  case TTraceValue::Kind::Array:
    return value.numbers;
  case TTraceValue::Kind::Pixels: {
    char checksum[32];
    std::snprintf(checksum, sizeof checksum, "%016llx", static_cast<unsigned long long>(value.pixels.checksum));
    return {{"images", value.pixels.images},
            {"bytes", value.pixels.bytes},
            {"checksum", value.pixels.checksum == 0 ? Json(nullptr) : Json(checksum)}};
  }
  case TTraceValue::Kind::Set:
  case TTraceValue::Kind::Object:
    return value.Text();
  default:
    return nullptr;
  }
}

Json TraceFactsJson(const TTraceFile& file)
{
  Json json = {{"program", file.Fact("program")},
               {"process", file.Process()},
               {"start", UtcText(file.StartUtcNs())},
               {"library", file.Fact("library")},
               {"library_build", file.Fact("library_build")},
               {"feature_library", file.Fact("feature_library")},
               {"feature_library_build", file.Fact("feature_library_build")}};
  for (const auto& variable : file.Variables()) json["variables"][variable.name] = variable.value;
  json["threads"] = file.Threads().size();
  json["calls"] = file.Calls().size();
  json["dropped_calls"] = file.DroppedCalls();
  json["dropped_parts"] = file.DroppedChunks();
  return json;
}

bool ReadTrace(TTraceFile& file, const std::string& path)
{
  const std::string wrong = file.Read(path);
  if (!wrong.empty()) Say(path + ": " + wrong);
  return wrong.empty();
}

} // namespace vxtool
