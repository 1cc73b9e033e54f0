// SPDX-License-Identifier: MIT
// Sums a trace up.
#include "tools/TraceReport.h"

#include "tools/Messages.h"
#include "tools/TraceText.h"
#include "tools/TTraceStatistics.h"

#include <algorithm>
#include <cstdio>

namespace vxtool {

namespace {

double ShareOf(const TTraceStatistics& statistics, const TTraceStatistics::TFunction& row)
{
  return statistics.Seconds() > 0.0 ? row.Total() / statistics.Seconds() : 0.0;
}

std::string FunctionsText(const TTraceStatistics& statistics, bool isApi)
{
  std::size_t width = 28; // that of the headings
  bool hasSome = false;
  for (const auto& row : statistics.Functions()) {
    width = std::max(width, row.function->name.size());
    hasSome |= row.function->isApi == isApi;
  }
  if (!hasSome) return "";
  char line[160];
  std::snprintf(line, sizeof line, "%10s %7s %10s %10s %10s  ", "calls", "share", "median", "99 %", "longest");
  std::string text = Padded(isApi ? "\nCalls of the program" : "\nCalls into the feature library", width + 3) +
                     line + "failures\n";
  for (const auto& row : statistics.Functions()) {
    if (row.function->isApi != isApi) continue;
    std::snprintf(line, sizeof line, "%10llu %6.1f%% %10s %10s %10s  ", static_cast<unsigned long long>(row.calls),
                  100.0 * ShareOf(statistics, row), DurationText(row.Quantile(0.5)).c_str(),
                  DurationText(row.Quantile(0.99)).c_str(), DurationText(row.Quantile(1.0)).c_str());
    std::string failures;
    for (const auto& [code, count] : row.failures)
      failures += (failures.empty() ? "" : ", ") + std::to_string(count) + " with " + CodeText(isApi, code);
    text += "  " + Padded(row.function->name, width) + line + failures;
    text.erase(text.find_last_not_of(' ') + 1);
    text += "\n";
  }
  return text;
}

std::string RunsText(const TTraceStatistics& statistics)
{
  std::string text;
  std::size_t number = 0;
  for (const auto& run : statistics.Runs()) {
    char line[200];
    std::snprintf(line, sizeof line, "  run %zu after %.3f s: %llu frames, %.1f a second; %llu images copied",
                  ++number, run.beginSeconds, static_cast<unsigned long long>(run.frames), run.FramesPerSecond(),
                  static_cast<unsigned long long>(run.imagesCopied));
    text += line;
    if (run.framesLost > 0) text += "; the camera's memory overflowed";
    text += "\n";
  }
  return text.empty() ? "" : "\nRuns\n" + text;
}

Json FunctionJson(const TTraceStatistics& statistics, const TTraceStatistics::TFunction& row)
{
  Json failures = Json::object();
  for (const auto& [code, count] : row.failures) failures[std::to_string(code)] = count;
  return {{"function", row.function->name},
          {"layer", row.function->isApi ? "api" : "core"},
          {"calls", row.calls},
          {"failures", failures},
          {"share", ShareOf(statistics, row)},
          {"median_seconds", row.Quantile(0.5)},
          {"p99_seconds", row.Quantile(0.99)},
          {"longest_seconds", row.Quantile(1.0)}};
}

Json RunJson(const TTraceStatistics::TRun& run)
{
  return {{"time", run.beginSeconds},
          {"frames", run.frames},
          {"rate", run.FramesPerSecond()},
          {"images_copied", run.imagesCopied},
          {"memory_overflows", run.framesLost}};
}

std::string JsonText(const TTraceStatistics& statistics)
{
  Json json = TraceFactsJson(statistics.File());
  json["seconds"] = statistics.Seconds();
  json["functions"] = Json::array();
  for (const auto& row : statistics.Functions()) json["functions"].push_back(FunctionJson(statistics, row));
  json["runs"] = Json::array();
  for (const auto& run : statistics.Runs()) json["runs"].push_back(RunJson(run));
  json["remarks"] = TraceRemarks(statistics);
  return JsonLine(json);
}

std::string PlainText(const TTraceStatistics& statistics)
{
  const TTraceFile& file = statistics.File();
  std::string text = file.Fact("program") + ", process " + std::to_string(file.Process()) + ": " +
                     CountText(static_cast<long long>(file.Calls().size()), "call") + " of " +
                     CountText(static_cast<long long>(file.Threads().size()), "thread") + " in " +
                     DurationText(statistics.Seconds()) + "\n";
  text +=
      FunctionsText(statistics, true) + FunctionsText(statistics, false) + RunsText(statistics) + "\nRemarks\n";
  const auto remarks = TraceRemarks(statistics);
  for (const std::string& remark : remarks) text += "  - " + remark + "\n";
  return remarks.empty() ? text + "  none\n" : text;
}

} // namespace

ExitCode ShowTraceStatistics(const TTraceOptions& options)
{
  TTraceFile file;
  if (!ReadTrace(file, options.file)) return ExitCode::InputError;
  const TTraceStatistics statistics(file);
  return Print(options.isJson ? JsonText(statistics) : PlainText(statistics)) ? ExitCode::Success
                                                                              : ExitCode::OutputError;
}

} // namespace vxtool
