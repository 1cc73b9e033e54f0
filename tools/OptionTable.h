// SPDX-License-Identifier: MIT
// The commands and options of the tool as text for programs: the manual page and the completion of shells read it.
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace vxtool {

/// A line for each command and each of its options, in the order of the help, hidden ones left out. Fields have a tab
/// between them: the command ("" for the program itself); names, "-e,--exposure" ("" in the line of a command,
/// "directory" for an argument without a dash); what stands behind the name, "SECONDS" or "{on,off}", in brackets when
/// it may be left out; the group in the help; options that it excludes; the help text. Fields may be empty.
std::string OptionTable(const CLI::App& app);

} // namespace vxtool
