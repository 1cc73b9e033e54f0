// SPDX-License-Identifier: MIT
// Takes out of a trace what is nobody's business.
#include "tools/TTraceRedactor.h"

#include "tools/TraceText.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <pwd.h>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace vxtool {

namespace {

// Shorter names are parts of other words.
constexpr std::size_t kMinName = 3;

std::string UserName()
{
  passwd entry{};
  passwd* found = nullptr;
  char texts[4096];
  return getpwuid_r(getuid(), &entry, texts, sizeof texts, &found) == 0 && found ? found->pw_name : "";
}

std::string HostName()
{
  char name[256] = {};
  return gethostname(name, sizeof name - 1) == 0 ? name : "";
}

bool IsPath(const std::string& text)
{
  return text.find('/') != std::string::npos || text.find('\\') != std::string::npos;
}

void ReplaceAll(std::string& text, const std::string& from, const std::string& to)
{
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
}

// A file is named by these, with or without a slash.
bool NamesFile(const std::string& argument)
{
  return argument == "path" || argument == "fileName";
}

} // namespace

TTraceRedactor::TTraceRedactor(const TTraceFile& file)
    : file_(file),
      bytes_(file.Bytes().begin(), file.Bytes().begin() + static_cast<std::ptrdiff_t>(file.UsedBytes()))
{
  names_[UserName()] = "user";
  names_[HostName()] = "host";
  FindSerialNumbers();
  std::erase_if(names_, [](const auto& name) { return name.first.size() < kMinName; });
}

// Texts that the camera says of itself and its place.
void TTraceRedactor::FindSerialNumbers()
{
  for (const TTraceCall& call : file_.Calls()) {
    if (call.function->name != "VX_GetString") continue;
    const std::string feature = call.Value("feature").text;
    if (feature == "SerialNumber") names_[call.Value("value").text] = "serial";
    if (feature == "DeviceSource" && call.Value("value").text != "simulated")
      names_[call.Value("value").text] = "address";
  }
}

std::string TTraceRedactor::WordFor(const std::string& text, const char* what)
{
  const auto [found, isNew] = words_.emplace(text, "");
  if (isNew) found->second = "<" + std::string(what) + std::to_string(++counts_[what]) + ">";
  return found->second;
}

std::string TTraceRedactor::RedactedText(const std::string& text)
{
  if (IsPath(text)) return WordFor(text, "path");
  std::string redacted = text;
  for (const auto& [name, what] : names_)
    if (redacted.find(name) != std::string::npos) ReplaceAll(redacted, name, WordFor(name, what.c_str()));
  return redacted;
}

std::string TTraceRedactor::RedactedHeader()
{
  std::istringstream lines(file_.HeaderText());
  std::string text;
  for (std::string line; std::getline(lines, line);) {
    const std::size_t tab = line.rfind('\t');
    if (!line.starts_with("function\t") && tab != std::string::npos) {
      const std::string value = line.substr(tab + 1);
      const bool isCamera = line.starts_with("variable\tVXCORE_"); // addresses and names of computers
      line = line.substr(0, tab + 1) + (isCamera ? WordFor(value, "setting") : RedactedText(value));
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
    const std::string redacted = isFile ? WordFor(text, "path") : RedactedText(text);
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
  TTraceRedactor redactor(file);
  const std::vector<std::byte> bytes = redactor.Redacted();
  const mode_t mask = umask(0077);
  std::ofstream out(options.other, std::ios::binary | std::ios::trunc);
  umask(mask);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  out.close();
  if (!out) return Fail(ExitCode::OutputError, options.other + ": cannot be written");
  std::string text;
  for (const auto& [secret, word] : redactor.Words()) text += Padded(word, 12) + " " + secret + "\n";
  if (options.isJson) text = JsonLine(Json(redactor.Words()));
  return Print(text) ? ExitCode::Success : ExitCode::OutputError;
}

} // namespace vxtool
