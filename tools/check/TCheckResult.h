// SPDX-License-Identifier: MIT
// The result of a check.
#pragma once

#include <string>
#include <vector>

namespace vxtool {

enum class Verdict
{
  Ok,
  Failed,
  Skipped,  ///< the camera has no such thing, or it cannot be seen in these images
  Warned,   ///< could not be carried out, since something before it failed
  Unstable, ///< failed, and passed when it was repeated
};

struct TCheckResult
{
  Verdict verdict = Verdict::Ok;
  std::string reason;             ///< of a skipped check or a warning; what was compared by a failed one
  std::string expected;           ///< of a failed check
  std::string actual;             ///< of a failed check
  std::vector<std::string> calls; ///< the last ones before a failure or a warning, with their results
  double seconds = 0.0;
};

/// "FAIL" for example.
const char* VerdictName(Verdict verdict);

} // namespace vxtool
