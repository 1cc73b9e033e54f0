// SPDX-License-Identifier: MIT
// What every command of the tool does with text.
#pragma once

#include "tools/ExitCode.h"

#include <string>

namespace vxtool {

/// Prints a line on standard error, behind the program's name.
void Say(const std::string& message);
/// The same for each line of a text.
void SayLines(const std::string& lines);
/// Says why a command ends, and gives back the code that it ends with.
ExitCode Fail(ExitCode code, const std::string& message);
/// Prints on standard output and flushes it; false when that does not succeed.
bool Print(const std::string& text);
/// The text with a question mark in place of each other character.
std::string PrintableAscii(std::string text);

} // namespace vxtool
