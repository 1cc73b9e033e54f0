// SPDX-License-Identifier: MIT
// One long-lived thread that runs tasks one after another.
#include "utility/TQuorinTaskLauncher.h"

#include "utility/IQuorinTask.h"
#include "utility/TQuorinEvent.h"
#include "utility/TQuorinLibDebugOutput.h"
#include "utility/TQuorinWorkThread.h"

#include <cxxabi.h>
#include <exception>

namespace QuorinUtility {

namespace {

/// Marks the end of the loop on every way out, a task that ends the thread included.
class TEndMark
{
public:
  explicit TEndMark(std::atomic<bool>& ended) : ended_(ended) {}
  ~TEndMark() { ended_ = true; }
  TEndMark(const TEndMark&) = delete;
  TEndMark& operator=(const TEndMark&) = delete;

private:
  std::atomic<bool>& ended_;
};

} // namespace

TQuorinTaskLauncher::TQuorinTaskLauncher()
    : taskReady_(std::make_unique<TQuorinEvent>(false, false)),
      launcherIdle_(std::make_unique<TQuorinEvent>(false, true))
{
  // Last: the thread runs Run() from here on.
  thread_ = std::make_unique<TQuorinWorkThread>(this, TQuorinWorkThread::eNormalPriority, "vxmcd-task");
}

TQuorinTaskLauncher::~TQuorinTaskLauncher()
{
  stopping_ = true;
  taskReady_->Set();
  thread_->WaitForCompletion();
  if (currentTask_.load())
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__,
                                  "a launched task did not run to its end: no thread");
  thread_.reset();
  launcherIdle_.reset();
  taskReady_.reset();
}

void TQuorinTaskLauncher::Launch(IQuorinTask* task, void* argument)
{
  launcherIdle_->Wait(TQuorinEvent::Infinite);
  currentArgument_ = argument;
  currentTask_ = task;
  taskReady_->Set();
}

bool TQuorinTaskLauncher::IsAlive() const
{
  return thread_->IsCreated() && !ended_;
}

void TQuorinTaskLauncher::Run()
{
  const TEndMark endMark(ended_);
  while (!stopping_ || currentTask_.load()) {
    taskReady_->Wait(TQuorinEvent::Infinite);
    if (currentTask_.load()) {
      ExecuteCurrentTask();
      currentTask_ = nullptr;
    }
    launcherIdle_->Set();
  }
}

void TQuorinTaskLauncher::ExecuteCurrentTask()
{
  try {
    currentTask_.load()->Execute(currentArgument_);
  } catch (abi::__forced_unwind&) {
    throw; // cancellation and pthread_exit must run to their end
  } catch (const std::exception& error) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "task failed: %s", error.what());
  } catch (...) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "task failed with an unknown exception");
  }
}

} // namespace QuorinUtility
