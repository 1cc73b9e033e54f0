// SPDX-License-Identifier: MIT
// The command that looks for what is wrong with a machine.
#pragma once

#include "tools/doctor/Checks.h"
#include "tools/Messages.h"
#include "tools/Options.h"
#include "tools/TBundle.h"

namespace vxtool {

/// Looks at everything that a camera program needs, area by area, and prints what is wrong with the command that cures it;
/// the last line is the verdict. May pack all that into a file. Borrows its options. For one use; one thread.
class TDoctorCommand final
{
public:
  TDoctorCommand(const TDoctorOptions& options, int camera, bool isJson)
      : options_(options), camera_(camera), isJson_(isJson)
  {
  }
  ExitCode Run();

private:
  void AskCameras();
  void Check();
  std::string ReportText(bool showsAll) const;
  std::string ReportJson() const;
  bool MakeBundle(TBundle& bundle) const;

  const TDoctorOptions& options_;
  const int camera_;
  const bool isJson_;
  TFlatCamera open_;
  TCameraFacts facts_;
  TFindings findings_;
};

} // namespace vxtool
