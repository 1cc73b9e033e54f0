// SPDX-License-Identifier: MIT
// Prints the calls of a trace.
#include "tools/TracePrint.h"

#include "tools/TraceText.h"

#include <algorithm>
#include <cstdio>
#include <fnmatch.h>
#include <limits>
#include <utility>

namespace vxtool {

namespace {

constexpr std::size_t kPrintedAtOnce = 64 * 1024;

bool IsWanted(const TTraceCall& call, const TTraceOptions& options)
{
  if (options.isApiOnly && !call.function->isApi) return false;
  if (options.isCoreOnly && call.function->isApi) return false;
  if (options.thread != 0 && call.thread != options.thread) return false;
  if (options.isErrorsOnly && !call.HasFailed() && call.state != CallState::Thrown) return false;
  if (options.isOpenOnly && call.state != CallState::Open) return false;
  if (options.fromSeconds && call.beginSeconds < *options.fromSeconds) return false;
  if (options.toSeconds && call.beginSeconds > *options.toSeconds) return false;
  return options.function.empty() || fnmatch(options.function.c_str(), call.function->name.c_str(), 0) == 0;
}

// Counts of frames are of no function and no call.
bool IsWanted(const TTraceFile::TFrames& frames, const TTraceOptions& options)
{
  if (options.isApiOnly || options.isErrorsOnly || options.isOpenOnly || !options.function.empty()) return false;
  if (options.tail != 0 || (options.thread != 0 && frames.thread != options.thread)) return false;
  return frames.seconds >= options.fromSeconds.value_or(frames.seconds) &&
         frames.seconds <= options.toSeconds.value_or(frames.seconds);
}

std::string Place(double seconds, std::uint32_t thread)
{
  char text[64];
  std::snprintf(text, sizeof text, "%12.6f T%u ", seconds, thread);
  return text;
}

std::string Line(const TTraceCall& call)
{
  const std::string result = ResultOf(call);
  const bool hasEnded = call.state == CallState::Ended || call.state == CallState::Thrown;
  return Place(call.beginSeconds, call.thread) + std::string(std::size_t{2} * std::min(call.depth, 20U), ' ') +
         CallText(call) + (result.empty() ? "" : " = " + result) +
         (hasEnded ? "  " + DurationText(call.endSeconds - call.beginSeconds) : "") + "\n";
}

std::string JsonText(const TTraceCall& call)
{
  Json json = {{"time", call.beginSeconds},
               {"thread", call.thread},
               {"depth", call.depth},
               {"layer", call.function->isApi ? "api" : "core"},
               {"function", call.function->name}};
  Json arguments = Json::object();
  const auto values = call.Values();
  for (std::size_t i = 0; i < values.size(); ++i)
    arguments[call.function->signature.Arguments()[i].name] = ValueJson(values[i]);
  json["arguments"] = arguments;
  constexpr const char* kStates[] = {"did not return", "returned", "thrown", "unknown"};
  json["state"] = kStates[static_cast<int>(call.state)];
  json["result"] = ValueJson(call.Result());
  json["seconds"] = call.state == CallState::Ended ? Json(call.endSeconds - call.beginSeconds) : Json(nullptr);
  return JsonLine(json);
}

std::string FramesText(const TTraceFile::TFrames& frames, bool isJson)
{
  if (isJson)
    return JsonLine({{"time", frames.seconds},
                     {"thread", frames.thread},
                     {"layer", "core"},
                     {"frames", frames.counts.waits},
                     {"bytes", frames.counts.bytes},
                     {"queued", frames.counts.queued}});
  return Place(frames.seconds, frames.thread) + "  (" + std::to_string(frames.counts.waits) + " frames of " +
         std::to_string(frames.counts.bytes) + " bytes waited for, " + std::to_string(frames.counts.queued) +
         " buffers queued)\n";
}

std::string Heading(const TTraceFile& file)
{
  const Json facts = TraceFactsJson(file);
  std::string text = "# " + file.Fact("program") + ", process " + std::to_string(file.Process()) + ", " +
                     facts["start"].get<std::string>() + "; library " + file.Fact("library") +
                     ", feature library " + file.Fact("feature_library") + "\n";
  for (const auto& variable : file.Variables())
    if (variable.name != "VXMCD_TRACE") text += "# " + variable.name + "=" + variable.value + "\n";
  if (file.DroppedChunks() > 0)
    text += "# " + std::to_string(file.DroppedChunks()) +
            " parts of 64 KiB are missing: the trace had its longest size\n";
  if (file.DroppedCalls() > 0)
    text += "# " + std::to_string(file.DroppedCalls()) + " calls could not be recorded\n";
  return text;
}

} // namespace

ExitCode PrintTrace(const TTraceOptions& options)
{
  TTraceFile file;
  if (!ReadTrace(file, options.file)) return ExitCode::InputError;
  std::vector<const TTraceCall*> calls;
  for (const TTraceCall& call : file.Calls())
    if (IsWanted(call, options)) calls.push_back(&call);
  if (options.tail > 0 && options.tail < calls.size())
    calls.erase(calls.begin(), calls.end() - static_cast<std::ptrdiff_t>(options.tail));

  std::string text = options.isJson ? "" : Heading(file);
  const auto put = [&text](const std::string& line) {
    text += line;
    return text.size() < kPrintedAtOnce || (Print(std::exchange(text, "")));
  };
  auto frames = file.Frames().begin();
  const auto putFramesUntil = [&](double seconds) {
    for (; frames != file.Frames().end() && frames->seconds <= seconds; ++frames)
      if (IsWanted(*frames, options) && !put(FramesText(*frames, options.isJson))) return false;
    return true;
  };
  for (const TTraceCall* const call : calls)
    if (!putFramesUntil(call->beginSeconds) || !put(options.isJson ? JsonText(*call) : Line(*call)))
      return ExitCode::OutputError;
  return putFramesUntil(std::numeric_limits<double>::max()) && Print(text) ? ExitCode::Success
                                                                           : ExitCode::OutputError;
}

} // namespace vxtool
