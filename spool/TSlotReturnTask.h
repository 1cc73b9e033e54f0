// SPDX-License-Identifier: MIT
// Requeues frame slots with the camera once their images are copied or given up.
#pragma once

#include "utility/TQuorinWorkThread.h"
#include "utility/TQuorinWorkThreadRoutine.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

class TSpoolFault;
class TSpoolQueue;

/// Takes images that a write task has finished from its reuse queue, in order, and requeues their slots with the camera
/// of the run, whichever is the current one. It has its own thread: with all slots on their way to the disk there is no
/// frame that would wake the acquisition thread. After an image that could not be written it aborts the write task's
/// input queue, since no other can follow. Owned by the run's pipeline; borrows queues and fault.
class TSlotReturnTask final : public QuorinUtility::TQuorinWorkThreadRoutine
{
public:
  TSlotReturnTask(TSpoolQueue* inputQueue, TSpoolQueue* reuseQueue, TSpoolFault* fault, int coreHandle);
  /// Aborts the reuse queue and waits for the thread.
  ~TSlotReturnTask() override;
  TSlotReturnTask(const TSlotReturnTask&) = delete;
  TSlotReturnTask& operator=(const TSlotReturnTask&) = delete;

  /// Whether there is a thread. False when it could not be made.
  bool IsAlive() const { return thread_.IsCreated(); }

  /// Blocks until this many images have come back, or the time is over. Returns whether they have.
  bool WaitForImages(std::uint64_t count, std::chrono::milliseconds timeout);

  /// The thread's work.
  void Run() override;

private:
  TSpoolQueue* const inputQueue_;
  TSpoolQueue* const reuseQueue_;
  TSpoolFault* const fault_;
  const int coreHandle_;
  std::mutex mutex_;
  std::condition_variable returned_;
  std::uint64_t images_ = 0; // guarded by mutex_
  QuorinUtility::TQuorinWorkThread thread_;
};
