// SPDX-License-Identifier: MIT
// Waits: how long they last and what ends them.
#include "tools/check/CameraRuns.h"
#include "tools/check/Checks.h"

#include <algorithm>
#include <chrono>
#include <future>
#include <thread>

namespace vxtool {

namespace {

using TClock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr double kLateSeconds = 0.05;
constexpr int kTries = 3; ///< of which the best counts: other programs delay threads, too
constexpr int kLongWaitMs = 3000;

double SecondsSince(TClock::time_point start)
{
  return std::chrono::duration<double>(TClock::now() - start).count();
}

// How much longer than asked for a thread sleeps on this machine at the moment.
double MachineDelay()
{
  const auto start = TClock::now();
  std::this_thread::sleep_for(milliseconds(20));
  return SecondsSince(start) - 0.02;
}

// A run that has ended well, of which no image ends the next wait. The start ends a cancellation before.
void EndRun(TCheckContext& check)
{
  StartRun(check, RunKind::Series, 1);
  check.Need("a run does not end well", WaitUntilIdle(check, 1));
  UseUpWaits(check);
}

} // namespace

void KeepsTimeOut(TCheckContext& check)
{
  constexpr int kWaitMs = 100;
  EndRun(check);
  double latest = 1e9;
  double delay = 0.0;
  for (int attempt = 0; attempt < kTries && latest > kLateSeconds; ++attempt) {
    const auto start = TClock::now();
    const unsigned int code = CHECK_CALL(check, WaitForAcquisitionTimeOut, kWaitMs);
    const double late = SecondsSince(start) - kWaitMs * 1e-3;
    TCheckContext::ExpectCode("a wait without an image", RC_NO_NEW_DATA, code);
    TCheckContext::Expect(late > -1e-3, "a wait of 100 ms", "100 ms at least",
                          TCheckContext::Shown(late + kWaitMs * 1e-3) + " s");
    latest = std::min(latest, late);
    delay = std::max(delay, MachineDelay());
  }
  TCheckContext::Expect(latest <= kLateSeconds + delay, "how much longer than 100 ms a wait lasts",
                        TCheckContext::Shown(kLateSeconds + delay) + " s at most",
                        TCheckContext::Shown(latest) + " s");
}

void CancelsWaits(TCheckContext& check)
{
  double latest = 1e9;
  double delay = 0.0;
  for (int attempt = 0; attempt < kTries && latest > kLateSeconds; ++attempt) {
    EndRun(check);
    auto wait = std::async(std::launch::async,
                           [&check] { return CHECK_CALL(check, WaitForAcquisitionTimeOut, kLongWaitMs); });
    TCheckContext::Expect(wait.wait_for(milliseconds(30)) == std::future_status::timeout,
                          "a wait without an image", "lasts until its time-out", "ended at once");
    const auto start = TClock::now();
    CHECK_CALL(check, CancelWait);
    TCheckContext::ExpectCode("a wait that was cancelled", RC_NO_NEW_DATA, wait.get());
    latest = std::min(latest, SecondsSince(start));
    delay = std::max(delay, MachineDelay());
  }
  TCheckContext::Expect(latest <= kLateSeconds + delay, "how long a wait lasts that was cancelled",
                        TCheckContext::Shown(kLateSeconds + delay) + " s at most",
                        TCheckContext::Shown(latest) + " s");
}

void WakesEveryWait(TCheckContext& check)
{
  constexpr std::size_t kWaits = 4;
  StartRun(check, RunKind::UntilAborted);
  std::vector<std::future<unsigned int>> waits;
  for (std::size_t number = 0; number < kWaits; ++number)
    waits.push_back(std::async(std::launch::async,
                               [&check] { return CHECK_CALL(check, WaitForAcquisitionTimeOut, kLongWaitMs); }));
  std::vector<unsigned int> codes;
  codes.reserve(kWaits);
  for (auto& wait : waits) codes.push_back(wait.get());
  for (const unsigned int code : codes)
    TCheckContext::ExpectCode("a wait of one of 4 threads during a run", RC_SUCCESS, code);
}

} // namespace vxtool
