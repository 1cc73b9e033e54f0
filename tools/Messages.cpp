// SPDX-License-Identifier: MIT
// Messages go to standard error, requested output to standard output.
#include "tools/Messages.h"

#include "tools/TCameraOutput.h"
#include "vxmcd.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace vxtool {

void Say(const std::string& message)
{
  if (message.empty()) return;
  if (TCameraOutput* const output = TCameraOutput::OfThread()) {
    output->Say(message);
    return;
  }
  std::fprintf(stderr, "vxmcd: %s\n", message.c_str());
}

void SayLines(const std::string& lines)
{
  for (std::size_t start = 0; start < lines.size();) {
    const std::size_t end = lines.find('\n', start);
    Say(lines.substr(start, end - start));
    start = end == std::string::npos ? lines.size() : end + 1;
  }
}

ExitCode Fail(ExitCode code, const std::string& message)
{
  Say(message);
  return code;
}

bool Print(const std::string& text)
{
  TCameraOutput* const output = TCameraOutput::OfThread();
  const bool isWritten =
      output ? output->Print(text) : std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
  if (isWritten) return true;
  Say("standard output: cannot be written: " + std::generic_category().message(errno));
  return false;
}

ExitCode FirstOf(ExitCode one, ExitCode other)
{
  for (const ExitCode code : {ExitCode::Usage, ExitCode::NoCamera, ExitCode::OutputError, ExitCode::CameraError,
                              ExitCode::Interrupted, ExitCode::FramesLost})
    if (one == code || other == code) return code;
  return one;
}

std::string RefusedText(const std::string& value, const std::string& accepted)
{
  return (value.empty() ? "an empty value" : value) + " is not accepted; " + accepted;
}

std::string Padded(const std::string& text, std::size_t width)
{
  return text + std::string(text.size() < width ? width - text.size() : 0, ' ');
}

std::string CountText(long long count, const char* word)
{
  return std::to_string(count) + " " + word + (count == 1 ? "" : "s");
}

std::string ChoiceText(const std::vector<std::string>& words)
{
  std::string text;
  for (std::size_t index = 0; index < words.size(); ++index)
    text += (index == 0 ? "" : index + 1 == words.size() ? " or " : ", ") + words[index];
  return text;
}

std::string ResultText(const std::string& function, unsigned int code)
{
  std::string text = function + ": " + std::to_string(code) + " " + vxmcd_GetResultName(code);
  const std::string meaning = vxmcd_GetResultMeaning(code);
  const std::string advice = vxmcd_GetResultAdvice(code);
  if (!meaning.empty()) text += ": " + meaning;
  if (!advice.empty()) text += "; " + advice;
  return text;
}

} // namespace vxtool
