// SPDX-License-Identifier: MIT
// A camera's runs: frames from the schedule through the camera's memory into queued buffers.
#pragma once

#include "vxcore/backend/IDeviceBackend.h"
#include "vxcore/simulated/TCameraState.h"
#include "vxcore/simulated/TDeviceStatus.h"
#include "vxcore/simulated/TFramePainter.h"
#include "vxcore/simulated/TFrameSchedule.h"
#include "vxcore/simulated/TRing.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <thread>
#include <vector>

namespace vxsim {

using vxcore::EPlannedFault;
using vxcore::IFrameFaults;
using vxcore::TDeviceContext;
using vxcore::TDeviceLock;
using vxcore::TPlannedFault;

/// Makes and delivers the frames of one open camera. Owned by TSimulatedCamera, whose settings and status it
/// borrows. Every operation is called with the device's lock held. With the real clock a thread of this object,
/// started with the first run and joined by the destructor, makes the frames; otherwise frames are made by the
/// callers that wait for or push them. Pixels are painted with the lock released; `painting_` then keeps the
/// buffer and the painter from everybody else, and Stop(), Flush() and Close() wait for its end. Without the wall clock
/// a wait writes a frame of stamps after it has released the lock for good; they wait for that too (`stampWriters_`).
class TAcquisition final
{
public:
  TAcquisition(TCameraState& state, TDeviceStatus& status, const TDeviceContext& context);
  ~TAcquisition();
  TAcquisition(const TAcquisition&) = delete;
  TAcquisition& operator=(const TAcquisition&) = delete;

  int Start(TDeviceLock& lock);
  int Stop(TDeviceLock& lock);
  int Queue(TDeviceLock& lock, unsigned char* buffer, int sizeBytes);
  int Wait(TDeviceLock& lock, unsigned char** buffer, int* sizeBytes, unsigned int timeoutMs);
  void Flush(TDeviceLock& lock);
  void Close(TDeviceLock& lock);

  /// A pulse on the software or the external trigger.
  void Trigger();
  /// Ends the run because the camera is gone.
  void Unplug();
  int PushFrame(TDeviceLock& lock, const unsigned char* bytes, int sizeBytes);
  void PushCode(int code);

  long long TimestampTicks() const;
  void ResetTimestamp() { timestampZeroNs_ = Now(); }
  VXSIM_Statistics Statistics() const;

  /// The camera's temperatures as they are now.
  TThermalModel& Thermal();
  /// Lets time pass; a run pauses meanwhile. With the real clock only temperatures notice.
  int AdvanceTime(double seconds);
  /// What the FIFO registers show: the fill of the camera's memory, FifoCapacity() when it is full.
  long long FifoFill() const;

private:
  using TClock = std::chrono::steady_clock;
  static constexpr uint32_t kNoRun = 0;

  struct TBuffer
  {
    unsigned char* bytes = nullptr;
    int sizeBytes = 0;
  };
  /// What a wait answers: a buffer, or a code.
  struct TReady
  {
    unsigned char* bytes = nullptr;
    int sizeBytes = 0;
    int code = VX_SUCCESS;
    bool held = true; ///< the buffer was queued by the caller
  };
  struct TExposedFrame
  {
    TFramePainter::TFrame content;
    bool pushed = false; ///< has bytes of its own
    std::vector<unsigned char> bytes;
    std::vector<TPlannedFault> faults;
  };

  bool IsPaced() const { return paced_; }
  int64_t Now() const;
  int64_t Ticks(int64_t ns) const;
  void Prepare();
  int64_t NextEndNs();

  void Run();
  bool MakeFrame(TDeviceLock& lock);
  bool MakeStampedFrame(TDeviceLock& lock, unsigned char*& bytes, int& sizeBytes);
  TFramePainter::TFrame Expose();
  bool TakeFaults(TExposedFrame& frame);
  int Store(TDeviceLock& lock, TExposedFrame frame);
  void Deliver(TDeviceLock& lock, TExposedFrame& frame);
  void DeliverFaulty(TDeviceLock& lock, TExposedFrame& frame);
  void Fill(TDeviceLock& lock, const TExposedFrame& frame, unsigned char* bytes, int sizeBytes);
  int FrameBytes(const TExposedFrame& frame) const;
  bool TransferStored(TDeviceLock& lock);
  size_t MemoryFrames() const;
  void EndIfComplete();
  void EndRun();
  /// Whether a run that was under way is over; false for kNoRun.
  bool HasRunEnded(uint32_t run) const { return run != kNoRun && (!state_.acquiring || runNumber_ != run); }
  void WaitUntilPainted(TDeviceLock& lock);
  bool HasAnswer();
  void LetOthersIn(TDeviceLock& lock);
  void DiscardBuffers();
  void Wake();

  TCameraState& state_;
  TDeviceStatus& status_;
  std::mutex& deviceMutex_;
  IFrameFaults& faults_;
  const bool paced_; ///< the camera's own thread makes the frames in real time

  // All guarded by deviceMutex_.
  std::condition_variable changed_; ///< for waiting callers
  std::condition_variable work_;    ///< for the camera's thread
  TFrameSchedule schedule_;
  TFramePainter painter_;
  uint64_t preparedRevision_ = 0;
  int64_t imageSizeBytes_ = 0;
  TRing<TBuffer> queued_;
  TRing<TReady> ready_;
  std::deque<TExposedFrame> memory_;
  TReady lastDelivered_;
  std::vector<unsigned char> foreignBuffer_;
  bool overflow_ = false; ///< the next wait has to tell
  bool painting_ = false;
  std::atomic<int> stampWriters_{0}; ///< grows under the lock, shrinks without it
  int holds_ = 0;                    ///< callers waiting for the painting to end: none may begin meanwhile
  int waiters_ = 0;                  ///< callers waiting on `changed_`
  uint64_t blockedWaits_ = 0;        ///< those of them that wait for a frame
  bool closed_ = false;
  uint32_t runNumber_ = kNoRun;
  uint64_t frameNumber_ = 0;
  int64_t runStartNs_ = 0;
  int64_t freeNowNs_ = 0; ///< the camera's time when it is not the wall clock
  int64_t timestampZeroNs_ = 0;
  TClock::time_point stalledUntil_{};
  std::thread thread_;
};

} // namespace vxsim
