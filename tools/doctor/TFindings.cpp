// SPDX-License-Identifier: MIT
// Findings in the order in which they are made.
#include "tools/doctor/TFindings.h"

#include <algorithm>

namespace vxtool {

void TFindings::Right(const std::string& text)
{
  findings_.push_back({area_, Severity::Right, text, ""});
}

void TFindings::Warn(const std::string& text, const std::string& cure)
{
  findings_.push_back({area_, Severity::Warning, text, cure});
}

void TFindings::Problem(const std::string& text, const std::string& cure)
{
  findings_.push_back({area_, Severity::Problem, text, cure});
}

int TFindings::Count(Severity severity) const
{
  return static_cast<int>(std::count_if(findings_.begin(), findings_.end(),
                                        [severity](const TFinding& one) { return one.severity == severity; }));
}

const char* SeverityName(Severity severity)
{
  switch (severity) {
  case Severity::Warning:
    return "warning";
  case Severity::Problem:
    return "problem";
  default:
    return "right";
  }
}

} // namespace vxtool
