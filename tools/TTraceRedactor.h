// SPDX-License-Identifier: MIT
// Takes out of a trace what is nobody's business.
#pragma once

#include "tools/Messages.h"
#include "tools/TraceOptions.h"
#include "tools/TRedaction.h"
#include "trace/TTraceFile.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vxtool {

/// Makes a trace in which paths, the names of users and computers, and serial numbers are replaced. Learns from the trace,
/// which may be another machine's. Borrows the trace and the redaction. Used once.
class TTraceRedactor final
{
public:
  TTraceRedactor(const TTraceFile& file, TRedaction& redaction);

  /// The bytes of the new trace.
  std::vector<std::byte> Redacted();

private:
  void LearnFromHeader();
  void LearnFrom(const TTraceCall& call);
  std::string RedactedText(const std::string& text);
  std::string RedactedVariable(const std::string& name, const std::string& value);
  std::string RedactedHeader();
  void RedactCall(const TTraceCall& call);
  void ReplaceText(const TTraceCall::TPlace& place, const std::string& text);

  const TTraceFile& file_;
  TRedaction& redaction_;
  std::vector<std::byte> bytes_;
};

ExitCode RedactTrace(const TTraceOptions& options);

} // namespace vxtool
