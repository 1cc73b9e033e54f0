// SPDX-License-Identifier: MIT
// Messages and texts of the tool.
#include "tools/ToolText.h"

#include <cstdio>

namespace vxtool {

void Say(const std::string& message)
{
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
  return std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
}

std::string PrintableAscii(std::string text)
{
  for (char& c : text)
    if (c < ' ' || c > '~') c = '?';
  return text;
}

} // namespace vxtool
