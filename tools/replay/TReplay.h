// SPDX-License-Identifier: MIT
// Makes the calls of a trace again.
#pragma once

#include "tools/replay/TReplayArguments.h"
#include "tools/replay/TReplayComparison.h"
#include "tools/replay/TReplayFiles.h"
#include "tools/replay/TReplayObjects.h"
#include "tools/replay/TReplayOrder.h"
#include "tools/replay/TReplayPlan.h"
#include "tools/replay/TReplayReport.h"

#include <condition_variable>
#include <map>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

namespace vxtool {

/// Makes the calls of a plan in as many threads as the program had, and compares the answers. Borrows all that it is made of.
/// Used once, by one thread.
class TReplay final
{
public:
  struct TSettings
  {
    bool isAtRecordedSpeed = false;
    bool mayChangeHardware = false; ///< calls are made that change a camera for good
    double timeoutSeconds =
        0.0; ///< in which a call has to return, besides ten times what it took in the recording
  };

  TReplay(const TReplayPlan& plan, const TReplayFiles& files, const TSettings& settings, TReplayReport& report);
  ~TReplay();
  TReplay(const TReplay&) = delete;
  TReplay& operator=(const TReplay&) = delete;

  /// False when a call has not returned in time, or the user has interrupted the replay: the process must end then, since
  /// a thread that is inside of a call cannot be ended.
  bool Run();

private:
  using Clock = TReplayOrder::Clock;
  struct TUnderWay
  {
    std::size_t step;
    Clock::time_point since;
    long camera; // that the call is for; 0: the current one of the process
    bool isCancelled = false;
  };
  struct TInner;

  void StartThreads();
  void RunThread(std::size_t thread);
  bool AwaitTurn(const TReplayStep& step);
  void MakeStep(std::size_t index, TReplayRoom& room);
  const char* WhySkipped(const TTraceCall& call, const TReplayFunction* function) const;
  TTraceCall MakeCall(std::size_t index, const TReplayFunction& function, const TReplayArguments& arguments,
                      TReplayRoom& room, std::vector<std::byte>& outputs);
  bool ShallRepeat(std::size_t index, const TTraceCall& replayed, Clock::time_point begin);
  void Report(std::size_t index, const TTraceCall& replayed);
  void CancelLateWaits();
  bool HasHung();
  void NoteUnderWay(std::size_t step, long camera);
  void NoteNotUnderWay(std::size_t step);
  static unsigned int Observe(void* context);

  const TReplayPlan& plan_;
  const TReplayFiles& files_;
  const TSettings settings_;
  TReplayReport& report_;
  TReplayObjects objects_;
  TReplayComparison comparison_;
  TReplayOrder order_;
  Clock::time_point begin_;
  std::vector<std::thread> threads_; // of the thread that starts them
  std::thread starter_;

  std::mutex mutex_;
  std::condition_variable ended_;
  bool hasEnded_ = false;                           // guarded by mutex_
  std::size_t threadsLeft_;                         // guarded by mutex_; that have calls to make
  std::vector<TUnderWay> underWay_;                 // guarded by mutex_
  std::map<std::size_t, Clock::time_point> events_; // guarded by mutex_; by the step
  std::set<std::size_t> runsWithoutWaits_;          // guarded by mutex_; in which an image did not come

  static thread_local TInner* inner_;
  static thread_local long cameraOfThread_; // 0: it has none of its own
};

} // namespace vxtool
