// SPDX-License-Identifier: MIT
// Takes out of a trace what is nobody's business.
#include "tools/TTraceRedactor.h"

#include "tools/TraceText.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/stat.h>

namespace vxtool {

namespace {

bool IsPath(const std::string& text)
{
  return text.find('/') != std::string::npos || text.find('\\') != std::string::npos;
}

bool IsNumber(const std::string& text)
{
  return text.find_first_not_of("0123456789") == std::string::npos;
}

constexpr const char* kVariable = "variable\t";
constexpr const char* kAddresses = "VXCORE_GENICAM"; // of cameras, or names of computers

// The file behind "info:", as a log has it; the whole text of others.
std::string PathOf(const std::string& value)
{
  for (const char* const level : {"error:", "warning:", "info:", "debug:"})
    if (value.starts_with(level)) return value.substr(std::strlen(level));
  return value;
}

// A file is named by these, with or without a slash.
bool NamesFile(const std::string& argument)
{
  return argument == "path" || argument == "fileName";
}

} // namespace

TTraceRedactor::TTraceRedactor(const TTraceFile& file, TRedaction& redaction)
    : file_(file),
      redaction_(redaction),
      bytes_(file.Bytes().begin(), file.Bytes().begin() + static_cast<std::ptrdiff_t>(file.UsedBytes()))
{
  LearnFromHeader();
  for (const TTraceCall& call : file.Calls()) LearnFrom(call);
}

void TTraceRedactor::LearnFromHeader()
{
  redaction_.Learn(file_.Fact("feature_library"));
  for (const TTraceFile::TVariable& variable : file_.Variables()) {
    if (variable.name == kAddresses) {
      redaction_.LearnDevices(variable.value);
    } else {
      redaction_.Learn(variable.value);
      if (IsPath(variable.value)) redaction_.LearnPath(PathOf(variable.value));
    }
  }
}

// Texts that the camera says of itself and its place, and files of the program.
void TTraceRedactor::LearnFrom(const TTraceCall& call)
{
  if (call.function->name == "GetCameraSerialNumber") {
    const TTraceValue number = call.Value("number");
    if (number.kind == TTraceValue::Kind::Signed) redaction_.HideSerialNumber(number.whole);
  }
  if (call.function->name == "VX_GetString") {
    const std::string feature = call.Value("feature").text;
    if (feature == "SerialNumber") redaction_.Hide(call.Value("value").text, "serial");
    if (feature == "DeviceSource" && call.Value("value").text != "simulated")
      redaction_.Hide(call.Value("value").text, "address");
  }
  const auto& arguments = call.function->signature.Arguments();
  for (const TTraceCall::TPlace& place : call.Places()) {
    if (place.argument < arguments.size() && arguments[place.argument].type == TraceType::Number) continue;
    const std::string text(reinterpret_cast<const char*>(place.bytes.data()), place.bytes.size());
    if (IsPath(text)) redaction_.LearnPath(text);
  }
}

std::string TTraceRedactor::RedactedText(const std::string& text)
{
  return IsPath(text) ? redaction_.Path(text) : redaction_.Text(text);
}

// "info:" of a log stays.
std::string TTraceRedactor::RedactedVariable(const std::string& name, const std::string& value)
{
  if (name == kAddresses) return value.empty() ? "" : redaction_.Word(value, "setting");
  if (IsNumber(value)) return value;
  const std::string path = PathOf(value);
  if (path.find('.') == std::string::npos && !IsPath(path)) return redaction_.Text(value);
  return value.substr(0, value.size() - path.size()) + redaction_.Path(path);
}

std::string TTraceRedactor::RedactedHeader()
{
  std::istringstream lines(file_.HeaderText());
  std::string text;
  for (std::string line; std::getline(lines, line);) {
    const std::size_t tab = line.rfind('\t');
    if (!line.starts_with("function\t") && tab != std::string::npos) {
      const std::string key = line.substr(0, tab);
      const std::string value = line.substr(tab + 1);
      line = key + "\t" +
             (key.starts_with(kVariable) ? RedactedVariable(key.substr(std::strlen(kVariable)), value)
                                         : RedactedText(value));
    }
    text += line + "\n";
  }
  return text;
}

// A text is replaced where it stands; what is behind it moves up, and the rest of the record is zeros.
void TTraceRedactor::ReplaceText(const TTraceCall::TPlace& place, const std::string& text)
{
  std::byte* const begin = bytes_.data() + (place.bytes.data() - file_.Bytes().data());
  const std::size_t length = std::min(text.size(), place.bytes.size()); // a longer word is cut
  std::memcpy(begin, text.data(), length);
  std::memmove(begin + length, begin + place.bytes.size(), place.rest.size());
  std::memset(begin + length + place.rest.size(), 0, place.bytes.size() - length);
  const auto size = static_cast<std::uint16_t>(length);
  std::memcpy(begin - sizeof size, &size, sizeof size);
}

void TTraceRedactor::RedactCall(const TTraceCall& call)
{
  auto places = call.Places();
  // From the last one on, so that the places of those before stay where they are.
  std::reverse(places.begin(), places.end());
  const auto& arguments = call.function->signature.Arguments();
  for (const TTraceCall::TPlace& place : places) {
    const bool isArgument = place.argument < arguments.size();
    const TraceType type = isArgument ? arguments[place.argument].type : TraceType::Text;
    if (type == TraceType::Number) {
      if (call.function->name == "GetCameraSerialNumber")
        std::memset(bytes_.data() + (place.bytes.data() - file_.Bytes().data()), 0, place.bytes.size());
      continue;
    }
    const std::string text(reinterpret_cast<const char*>(place.bytes.data()), place.bytes.size());
    const bool isFile = isArgument && NamesFile(arguments[place.argument].name) && !text.empty();
    const std::string redacted = isFile ? redaction_.Path(text) : RedactedText(text);
    if (redacted != text) ReplaceText(place, redacted);
  }
}

std::vector<std::byte> TTraceRedactor::Redacted()
{
  for (const TTraceCall& call : file_.Calls()) RedactCall(call);
  TraceFormat::TFileHeader header;
  std::memcpy(&header, bytes_.data(), sizeof header);
  std::string text = RedactedHeader();
  text.resize(std::min<std::size_t>(text.size(), header.headerBytes - sizeof header));
  std::memset(bytes_.data() + sizeof header, 0, header.headerBytes - sizeof header);
  std::memcpy(bytes_.data() + sizeof header, text.data(), text.size());
  header.textBytes = static_cast<std::uint32_t>(text.size());
  header.process = 0;
  std::memcpy(bytes_.data(), &header, sizeof header);
  return std::move(bytes_);
}

ExitCode RedactTrace(const TTraceOptions& options)
{
  TTraceFile file;
  if (!ReadTrace(file, options.file)) return ExitCode::InputError;
  std::error_code error;
  if (std::filesystem::equivalent(options.file, options.other, error))
    return Fail(ExitCode::Usage, options.other + ": is the trace itself");
  TRedaction redaction = TRedaction::OfThisMachine();
  const std::vector<std::byte> bytes = TTraceRedactor(file, redaction).Redacted();
  const mode_t mask = umask(0077);
  std::ofstream out(options.other, std::ios::binary | std::ios::trunc);
  umask(mask);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  out.close();
  if (!out) return Fail(ExitCode::OutputError, options.other + ": cannot be written");
  std::string text;
  for (const auto& [secret, word] : redaction.Words()) text += Padded(word, 12) + " " + secret + "\n";
  if (options.isJson) text = JsonLine(Json(redaction.Words()));
  return Print(text) ? ExitCode::Success : ExitCode::OutputError;
}

} // namespace vxtool
