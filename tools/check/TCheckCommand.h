// SPDX-License-Identifier: MIT
// The command that checks whether a camera behaves.
#pragma once

#include "tools/check/Checks.h"
#include "tools/check/TOwnTrace.h"
#include "tools/Messages.h"
#include "tools/Options.h"
#include "tools/TBundle.h"

#include <map>
#include <vector>

namespace vxtool {

/// Runs checks one after the other, prints the verdict of each and their counts, and puts the camera's settings back, also
/// after an interruption. Keeps the trace of its calls when a check does not pass, and may pack all of it into a file. Borrows
/// options and trace. For one use; one thread.
class TCheckCommand final
{
public:
  TCheckCommand(const TCheckOptions& options, int camera, bool isJson, TOwnTrace& trace)
      : options_(options), camera_(camera), isJson_(isJson), trace_(trace)
  {
  }
  ExitCode Run();

private:
  struct TDone
  {
    const TCheck* check;
    TCheckResult result;
    double fromSeconds; ///< of the trace
    double toSeconds;
  };

  /// Those that the options ask for; false, with a message, for a name that there is not.
  bool Choose();
  ExitCode PrintList() const;
  ExitCode RunAll();
  /// As often as the options say, until it fails, and then once more.
  TCheckResult RunOften(const TCheck& check) const;
  /// Why the camera cannot be opened any more; "" when it can.
  std::string WhyGone() const;
  bool HasFailed() const;
  int Count(Verdict verdict) const
  {
    const auto found = counts_.find(verdict);
    return found == counts_.end() ? 0 : found->second;
  }
  std::string Details(const TDone& done, const std::string& indent) const;
  std::string ResultText(const TDone& done) const;
  std::string TapText(const TDone& done) const;
  std::string VerdictText() const;
  std::string ReportJson() const;
  bool MakeBundle(TBundle& bundle) const;

  const TCheckOptions& options_;
  const int camera_;
  const bool isJson_;
  TOwnTrace& trace_;
  std::vector<const TCheck*> checks_;
  std::vector<TDone> done_;
  std::map<Verdict, int> counts_;
  bool isWhole_ = true; ///< not interrupted
  std::string whyGone_; ///< why the camera could not be opened after the last check; "" when it could
  std::string text_;    ///< the report so far
};

} // namespace vxtool
