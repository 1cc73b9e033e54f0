// SPDX-License-Identifier: MIT
// A thread that runs a routine object.
#include "utility/TQuorinWorkThread.h"

#include "utility/TQuorinLibDebugOutput.h"
#include "utility/TQuorinMisc.h"
#include "utility/TQuorinWorkThreadRoutine.h"

#include <cerrno>
#include <csignal>
#include <cxxabi.h>
#include <exception>

namespace QuorinUtility {

namespace {

constexpr std::size_t kNameSize = 16; // what the kernel keeps of a thread's name, with the terminator

/// Blocks the application's signals while a thread is made, which inherits the mask. Faults stay deliverable:
/// blocked, they would kill the process without any crash handler having its say.
class TSignalsBlocked
{
public:
  TSignalsBlocked()
  {
    sigset_t blocked;
    sigfillset(&blocked);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS}) sigdelset(&blocked, fault);
    pthread_sigmask(SIG_BLOCK, &blocked, &before_);
  }
  ~TSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  TSignalsBlocked(const TSignalsBlocked&) = delete;
  TSignalsBlocked& operator=(const TSignalsBlocked&) = delete;

private:
  sigset_t before_;
};

void SetName(pthread_t thread, const char* name)
{
  char bounded[kNameSize];
  TQuorinMisc::strncpy(bounded, name, sizeof bounded);
  pthread_setname_np(thread, bounded);
}

} // namespace

TQuorinWorkThread::TQuorinWorkThread(TQuorinWorkThreadRoutine* routine, ePriority, const char* name)
{
  int result = 0;
  {
    const TSignalsBlocked signals;
    result = pthread_create(&thread_, nullptr, DispatchRoutine, routine);
  }
  created_ = result == 0;
  joinable_ = created_;
  if (!created_)
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "cannot create thread %s: error %d",
                                  name ? name : "", result);
  else if (name)
    SetName(thread_, name);
}

int TQuorinWorkThread::WaitForCompletion()
{
  if (!joinable_) return ESRCH;
  if (pthread_equal(thread_, pthread_self())) return EDEADLK; // the owner has still to join it
  if (!joinable_.exchange(false)) return ESRCH;
  int cancelState = 0;
  pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancelState);
  const int result = pthread_join(thread_, nullptr);
  pthread_setcancelstate(cancelState, nullptr);
  return result;
}

void* TQuorinWorkThread::DispatchRoutine(void* routine)
{
  if (!routine) return nullptr;
  try {
    static_cast<TQuorinWorkThreadRoutine*>(routine)->Run();
  } catch (abi::__forced_unwind&) {
    throw; // cancellation and pthread_exit must run to their end
  } catch (const std::exception& error) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "thread ended by an exception: %s", error.what());
  } catch (...) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "thread ended by an unknown exception");
  }
  return nullptr;
}

} // namespace QuorinUtility
