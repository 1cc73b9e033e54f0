// SPDX-License-Identifier: MIT
// What was found out about a machine.
#pragma once

#include <string>
#include <vector>

namespace vxtool {

enum class Severity
{
  Right,
  Warning, ///< slows down or may fail
  Problem, ///< does not work
};

struct TFinding
{
  std::string area;
  Severity severity = Severity::Right;
  std::string text;
  std::string cure; ///< a command or what to do; "" when nothing is wrong
};

/// Collects findings area by area, in the order in which they are made. One thread.
class TFindings final
{
public:
  /// What follows belongs to this area.
  void BeginArea(const std::string& area) { area_ = area; }
  void Right(const std::string& text);
  void Warn(const std::string& text, const std::string& cure);
  void Problem(const std::string& text, const std::string& cure);

  const std::vector<TFinding>& All() const { return findings_; }
  int Count(Severity severity) const;

private:
  std::string area_;
  std::vector<TFinding> findings_;
};

/// "problem" for example.
const char* SeverityName(Severity severity);

} // namespace vxtool
