// SPDX-License-Identifier: MIT
// What stands out in a trace, in words.
#include "tools/Messages.h"
#include "tools/TraceText.h"
#include "tools/TTraceStatistics.h"
#include "vxcore.h"
#include "vxmcd.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <iterator>
#include <set>

namespace vxtool {

namespace {

// A loop that asks without waiting. Each call takes locks that the camera's thread needs, too.
constexpr double kManyPerSecond = 2000.0;
constexpr std::uint64_t kManyCalls = 1000;
// As many names are listed.
constexpr std::size_t kMaxNames = 12;
// Of the calls of one function, so many with the same image again.
constexpr std::uint64_t kManyRepeats = 10;

using TRemarks = std::vector<std::string>;

std::string Times(std::uint64_t count)
{
  return count == 1 ? "once" : std::to_string(count) + " times";
}

std::string List(const std::set<std::string>& names)
{
  std::string text;
  std::size_t count = 0;
  for (const std::string& name : names) {
    if (count++ == kMaxNames) return text + " and " + std::to_string(names.size() - kMaxNames) + " more";
    text += (text.empty() ? "" : ", ") + name;
  }
  return text;
}

std::uint64_t CountOf(const TTraceFile& file, const std::function<bool(const TTraceCall&)>& condition)
{
  return static_cast<std::uint64_t>(std::count_if(file.Calls().begin(), file.Calls().end(), condition));
}

bool Is(const TTraceCall& call, const char* name)
{
  return call.function->name == name;
}

void AddCompleteness(const TTraceFile& file, TRemarks& remarks)
{
  if (file.Calls().empty()) remarks.push_back("There is no call in the trace.");
  if (file.DroppedChunks() > 0)
    remarks.push_back(
        "The trace had its longest size, and its middle was dropped: the counts are of what is left. A "
        "longer one is made with --limit.");
  if (file.DroppedCalls() > 0)
    remarks.push_back(Times(file.DroppedCalls()) +
                      ", a call was made where it could not be recorded, such as in a "
                      "signal handler during another call.");
}

void AddEnds(const TTraceFile& file, TRemarks& remarks)
{
  for (const TTraceCall& call : file.Calls()) {
    if (call.state != CallState::Open || call.depth != 0 || !call.function->isApi) continue;
    char time[64];
    std::snprintf(time, sizeof time, " after %.6f s in thread T%u", call.beginSeconds, call.thread);
    remarks.push_back(CallText(call) + " did not return: the program ended in it" + time + ", or still is in it.");
  }
  // The camera's thread always waits for a frame.
  const bool wasOpen =
      CountOf(file, [](const auto& call) { return Is(call, "Initialize") && call.Code() == RC_SUCCESS; });
  const bool wasClosed =
      CountOf(file, [](const auto& call) { return Is(call, "ShutDown") && call.Code() == RC_SUCCESS; });
  if (wasOpen && !wasClosed)
    remarks.push_back("The program did not call ShutDown(): the camera was open until its end.");
}

void AddCameraErrors(const TTraceFile& file, TRemarks& remarks)
{
  std::set<std::string> without;
  std::uint64_t count = 0;
  bool isOpenFailing = false;
  for (const TTraceCall& call : file.Calls()) {
    if (!call.function->isApi || call.depth != 0) continue;
    if (Is(call, "Initialize") && call.HasFailed()) isOpenFailing = true;
    if (call.Code() != RC_NOT_INITIALIZED) continue;
    without.insert(call.function->name);
    ++count;
  }
  if (isOpenFailing)
    remarks.push_back("Initialize() failed: there was no camera, or another program had it. vxmcd list shows the "
                      "cameras.");
  if (count > 0)
    remarks.push_back(Times(count) + ", a function was called while no camera was open: " + List(without) +
                      ". Initialize() comes first, and after SetCurrentCamera() for each camera.");
  const std::uint64_t overflows = CountOf(
      file, [](const auto& call) { return Is(call, "VX_WaitBuffer") && call.Code() == VX_ERR_HARDWARE_OVERFLOW; });
  if (overflows > 0)
    remarks.push_back("The memory of the camera overflowed " + Times(overflows) +
                      ", which ends a run: the disk, or the program's own thread, is too slow for this rate.");
  const std::uint64_t gone =
      CountOf(file, [](const auto& call) { return !call.function->isApi && call.Code() == VX_ERR_COMMUNICATION; });
  if (gone > 0)
    remarks.push_back("The camera did not answer " + Times(gone) + ": it was unplugged, or has no power.");
}

void AddRefusedArguments(const TTraceFile& file, TRemarks& remarks)
{
  constexpr std::uint32_t kCodes[] = {RC_P1_INVALID, RC_P2_INVALID, RC_P3_INVALID,
                                      RC_P4_INVALID, RC_P5_INVALID, RC_P6_INVALID};
  std::set<std::string> refused;
  const std::uint64_t count = CountOf(file, [&](const auto& call) {
    const bool isRefused =
        call.function->isApi && std::count(std::begin(kCodes), std::end(kCodes), call.Code()) > 0;
    if (isRefused) refused.insert(call.function->name);
    return isRefused;
  });
  if (count > 0)
    remarks.push_back("Arguments were refused " + Times(count) + ", of " + List(refused) +
                      ": vxmcd trace print --errors shows the calls, VXMCD_LOG=debug why.");
}

void AddPolling(const TTraceStatistics& statistics, TRemarks& remarks)
{
  for (const auto& row : statistics.Functions()) {
    const std::string& name = row.function->name;
    if (name != "GetStatus" && name != "GetNumberAvailableImages" && name != "GetTotalNumberImagesAcquired" &&
        name != "GetAcquisitionProgress")
      continue;
    const double rate = statistics.Seconds() > 0.0 ? static_cast<double>(row.calls) / statistics.Seconds() : 0.0;
    if (row.calls < kManyCalls || rate < kManyPerSecond) continue;
    remarks.push_back(
        name + "() is called " + std::to_string(std::lround(rate)) +
        " times a second: wait with WaitForAcquisitionTimeOut(), which takes no time of the processor.");
  }
}

void AddRetrieval(const TTraceFile& file, TRemarks& remarks)
{
  struct TCopies
  {
    std::uint64_t none = 0;
    std::uint64_t again = 0;
    std::uint64_t last = 0;
    std::uint64_t noNew = 0;
  };
  std::map<std::string, TCopies> functions;
  for (const TTraceCall& call : file.Calls()) {
    if (!call.function->signature.HasPixels() || call.state != CallState::Ended) continue;
    TCopies& copies = functions[call.function->name];
    if (call.Code() == RC_NO_NEW_DATA) ++copies.noNew;
    if (call.Code() != RC_SUCCESS) continue;
    const auto pixels = call.Value("array").pixels;
    if (pixels.images == 0) ++copies.none;
    if (pixels.checksum != 0 && pixels.checksum == copies.last) ++copies.again;
    copies.last = pixels.checksum;
  }
  for (const auto& [name, copies] : functions) {
    if (copies.none > 0)
      remarks.push_back(name + "() answered RC_SUCCESS and copied nothing " + Times(copies.none) +
                        ": the image was overwritten, or is of another image area than now. "
                        "vxmcd_GetIntactImage16() and its forms say so by their code.");
    if (copies.again >= kManyRepeats)
      remarks.push_back(name + "() gave the same image again " + Times(copies.again) +
                        ": wait for a new one with WaitForAcquisitionTimeOut().");
    if (copies.noNew >= kManyCalls)
      remarks.push_back(name + "() found no new image " + Times(copies.noNew) +
                        ": wait for one with WaitForAcquisitionTimeOut().");
  }
}

// Some functions answer success whatever the camera does. What a camera does not have at all is no surprise.
void AddSilentRefusals(const TTraceFile& file, TRemarks& remarks)
{
  std::map<std::pair<std::string, std::uint32_t>, std::set<std::string>> refused; // by function and code
  std::map<std::uint32_t, const TTraceCall*> callers;                             // by thread
  for (const TTraceCall& call : file.Calls()) {
    if (call.function->isApi) {
      callers[call.thread] = &call;
      continue;
    }
    const bool isWrite = call.function->name.starts_with("VX_Set") || Is(call, "VX_Command");
    const TTraceCall* const caller = callers[call.thread];
    if (!isWrite || !call.HasFailed() || call.Code() == VX_ERR_NOT_IMPLEMENTED || !caller ||
        caller->Code() != RC_SUCCESS)
      continue;
    if (call.depth <= caller->depth || call.beginSeconds > caller->endSeconds) continue;
    refused[{caller->function->name, call.Code()}].insert(call.Value("feature").text);
  }
  for (const auto& [call, features] : refused)
    remarks.push_back(call.first + "() answered RC_SUCCESS, though the camera refused " + List(features) +
                      " with " + CodeText(false, call.second) + ": nothing was changed" +
                      (call.second == VX_ERR_NOT_WRITABLE ? ", as during a run." : "."));
}

void AddUnused(const TTraceStatistics& statistics, TRemarks& remarks)
{
  std::set<std::string> unused;
  for (const auto& row : statistics.Functions())
    if (row.function->signature.IsUnused()) unused.insert(row.function->name);
  if (!unused.empty())
    remarks.push_back(
        "These functions do nothing here but return a code; docs/api.md says what takes their place: " +
        List(unused) + ".");
}

void AddRuns(const TTraceStatistics& statistics, TRemarks& remarks)
{
  std::uint64_t runsWithoutFrame = 0;
  for (const auto& run : statistics.Runs()) runsWithoutFrame += run.frames == 0 ? 1 : 0;
  const bool hasFrames =
      CountOf(statistics.File(), [](const auto& call) { return Is(call, "VX_WaitBuffer"); }) > 0;
  if (hasFrames && runsWithoutFrame > 0)
    remarks.push_back(std::to_string(runsWithoutFrame) + " of " + std::to_string(statistics.Runs().size()) +
                      " runs brought no frame: was there a trigger?");
}

} // namespace

std::vector<std::string> TraceRemarks(const TTraceStatistics& statistics)
{
  TRemarks remarks;
  AddCompleteness(statistics.File(), remarks);
  AddEnds(statistics.File(), remarks);
  AddCameraErrors(statistics.File(), remarks);
  AddRefusedArguments(statistics.File(), remarks);
  AddSilentRefusals(statistics.File(), remarks);
  AddRuns(statistics, remarks);
  AddPolling(statistics, remarks);
  AddRetrieval(statistics.File(), remarks);
  AddUnused(statistics, remarks);
  return remarks;
}

} // namespace vxtool
