// SPDX-License-Identifier: MIT
// What the commands of the tool say, and how they end.
#pragma once

#include <string>
#include <vector>

namespace vxtool {

/// What the tool's process returns. When several apply, an output error comes before a camera error, that before
/// an interruption, and that before lost frames.
enum class ExitCode : int
{
  Success = 0,
  Usage = 1,
  NoCamera = 2,
  CameraError = 3,
  OutputError = 4,
  FramesLost = 5,
  InputError = 6,
  Interrupted = 130,
};

/// The code that comes first when two apply.
ExitCode FirstOf(ExitCode one, ExitCode other);

/// Prints a line on standard error, behind the program's name, and in a thread with a TCameraOutput behind that of its
/// camera; nothing for an empty message.
void Say(const std::string& message);
/// The same for each line of a text.
void SayLines(const std::string& lines);
/// Says why a command ends, and returns the code that it ends with.
ExitCode Fail(ExitCode code, const std::string& message);
/// Prints on standard output and flushes it; false, with a message, when that does not
/// succeed.
bool Print(const std::string& text);
/// What is said of the value of an option: the value, and what would be accepted.
std::string RefusedText(const std::string& value, const std::string& accepted);
/// With spaces behind it, for columns.
std::string Padded(const std::string& text, std::size_t width);
/// "1 call", "2 calls".
std::string CountText(long long count, const char* word);
/// "8, 16 or 32".
std::string ChoiceText(const std::vector<std::string>& words);
/// One line: the function that answered, the code, its name, what it means and what to try.
std::string ResultText(const std::string& function, unsigned int code);

} // namespace vxtool
