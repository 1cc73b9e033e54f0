// SPDX-License-Identifier: MIT
// Takes out of a trace what is nobody's business.
#pragma once

#include "tools/Messages.h"
#include "tools/TraceOptions.h"
#include "trace/TTraceFile.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace vxtool {

/// Makes a trace in which paths, the names of user and computer, and serial numbers are replaced, each by the same word
/// everywhere, so that traces can still be compared. Borrows the trace. Used once.
class TTraceRedactor final
{
public:
  explicit TTraceRedactor(const TTraceFile& file);

  /// The bytes of the new trace.
  std::vector<std::byte> Redacted();
  /// What was replaced, by what; for the user, not for the file.
  const std::map<std::string, std::string>& Words() const { return words_; }

private:
  void FindSerialNumbers();
  std::string WordFor(const std::string& text, const char* what);
  std::string RedactedText(const std::string& text);
  std::string RedactedHeader();
  void RedactCall(const TTraceCall& call);
  void ReplaceText(const TTraceCall::TPlace& place, const std::string& text);

  const TTraceFile& file_;
  std::vector<std::byte> bytes_;
  std::map<std::string, std::string> words_;
  std::map<std::string, int> counts_;        ///< of the words of a kind
  std::map<std::string, std::string> names_; ///< that are replaced wherever they stand, and what they are
};

ExitCode RedactTrace(const TTraceOptions& options);

} // namespace vxtool
