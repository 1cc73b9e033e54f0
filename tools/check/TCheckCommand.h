// SPDX-License-Identifier: MIT
// The command that checks whether a camera behaves.
#pragma once

#include "tools/check/Checks.h"
#include "tools/Messages.h"
#include "tools/Options.h"

#include <map>
#include <vector>

namespace vxtool {

/// Runs checks one after the other, prints the verdict of each and their counts, and puts the camera's settings back, also
/// after an interruption. For one use; one thread.
class TCheckCommand final
{
public:
  TCheckCommand(const TCheckOptions& options, int camera, bool isJson)
      : options_(options), camera_(camera), isJson_(isJson)
  {
  }
  ExitCode Run();

private:
  struct TDone
  {
    const TCheck* check;
    TCheckResult result;
  };

  /// Those that the options ask for; false, with a message, for a name that there is not.
  bool Choose();
  ExitCode PrintList() const;
  ExitCode RunAll();
  /// As often as the options say, until it fails, and then once more.
  TCheckResult RunOften(const TCheck& check) const;
  bool PrintResult(const TDone& done) const;
  bool PrintVerdict(bool isWhole) const;

  const TCheckOptions& options_;
  const int camera_;
  const bool isJson_;
  std::vector<const TCheck*> checks_;
  std::vector<TDone> done_;
  std::map<Verdict, int> counts_;
};

} // namespace vxtool
