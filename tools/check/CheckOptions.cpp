// SPDX-License-Identifier: MIT
// The options of the command check.
#include "tools/check/CheckOptions.h"

#include "tools/check/CheckGroups.h"
#include "tools/OptionKinds.h"

namespace vxtool {

void AddCheckOptions(CLI::App& command, TCheckOptions& options)
{
  constexpr int kMaxRepeat = 10'000;
  AddWordList(command, "--group", options.groups, CheckGroups(), "Run these groups only")->type_name("GROUP,...");
  command.add_option("--only", options.names, "Run these checks only, as --list names them")
      ->type_name("NAME,...")
      ->delimiter(',');
  CLI::Option* const list =
      command.add_flag("--list", options.isListing, "Print the checks and what each expects, and run none");
  command.add_option("--repeat", options.repeat, "Run each check so often, until it fails; default: 1")
      ->type_name("N")
      ->transform(WholeNumber(1, kMaxRepeat));
  command.add_flag("--harsh", options.isHarsh, "Run also what takes minutes and changes the temperature");
  command.add_flag("--tap", options.isTap, "Print the results in the Test Anything Protocol")->excludes("--json");
  AddBundle(command, options.bundle, "Pack the report and the call trace of the checks")->excludes(list);
}

} // namespace vxtool
