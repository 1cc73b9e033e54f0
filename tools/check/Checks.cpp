// SPDX-License-Identifier: MIT
// The table of checks, and one run of a check.
#include "tools/check/Checks.h"

#include "tools/check/CameraRuns.h"

#include <chrono>

namespace vxtool {

namespace {

constexpr TCheck kChecks[] = {
#define CHECK(group, name, function, expected, isHarsh) {group, name, expected, function, isHarsh},
#include "tools/check/checks.def"
};

} // namespace

std::span<const TCheck> AllChecks()
{
  return kChecks;
}

TCheckResult RunCheck(const TCheck& check, int camera, bool isHarsh)
{
  const auto start = std::chrono::steady_clock::now();
  TCheckContext context(camera, isHarsh);
  TCheckResult result;
  try {
    MakeReady(context);
    check.run(context);
  } catch (const TCheckContext::TEnd& end) {
    result = end.result;
    if (result.verdict != Verdict::Skipped) result.calls = context.Calls();
  } catch (const TCheckContext::TInterrupted&) {
    AbortAcquisition();
    throw;
  }
  AbortAcquisition();
  result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  return result;
}

} // namespace vxtool
