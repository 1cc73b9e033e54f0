// SPDX-License-Identifier: MIT
// What every command of the tool does with text.
#pragma once

#include <string>

namespace vxtool {

/// Prints a line on standard error, behind the program's name.
void Say(const std::string& message);
/// The same for each line of a text.
void SayLines(const std::string& lines);
/// Prints on standard output and flushes it; false when that does not succeed.
bool Print(const std::string& text);
/// The text with a question mark in place of each other character.
std::string PrintableAscii(std::string text);

} // namespace vxtool
