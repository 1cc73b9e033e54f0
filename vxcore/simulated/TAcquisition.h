// SPDX-License-Identifier: MIT
// A camera's runs: frames from the schedule through the camera's memory into queued buffers.
#pragma once

#include "vxcore/backend/IDeviceBackend.h"
#include "vxcore/simulated/TCameraClock.h"
#include "vxcore/simulated/TCameraState.h"
#include "vxcore/simulated/TDeviceStatus.h"
#include "vxcore/simulated/TFrameBuffers.h"
#include "vxcore/simulated/TFramePainter.h"
#include "vxcore/simulated/TFrameSchedule.h"
#include "vxcore/simulated/TPaintingTurn.h"
#include "vxcore/simulated/TSensorFaults.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

namespace vxsim {

using vxcore::TDeviceContext;

/// Makes and delivers the frames of one open camera. Owned by TSimulatedCamera, whose settings and status it
/// borrows. Every operation is called with the device locked. With the real clock a thread of this object,
/// started with the first run and joined by the destructor, makes the frames; otherwise frames are made by the
/// callers that wait for or push them. Stop(), Flush() and Close() wait until no buffer is being written.
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

  long long TimestampTicks() const { return clock_.Ticks(clock_.NowNs()); }
  void ResetTimestamp() { clock_.ResetTicks(); }
  VXSIM_Statistics Statistics() const;

  /// The camera's temperatures as they are now.
  TThermalModel& Thermal();
  /// Moves the camera's time; a run pauses meanwhile. With the real clock only temperatures change.
  int AdvanceTime(double seconds);
  /// What the FIFO registers show: the fill of the camera's memory, FifoCapacity() when it is full.
  long long FifoFill() const;

private:
  static constexpr uint32_t kNoRun = 0;

  void Prepare();
  int64_t NextEndNs();

  void Run();
  bool MakeFrame(TDeviceLock& lock);
  bool MakeStampedFrame(TDeviceLock& lock, unsigned char*& bytes, int& sizeBytes);
  TFramePainter::TFrame ExposeContent();
  TExposedFrame Expose();
  TFramePainter::TFrame NextFrame(int64_t startNs);
  int Receive(TDeviceLock& lock, TExposedFrame frame);
  int Store(TDeviceLock& lock, TExposedFrame frame);
  void Deliver(TDeviceLock& lock, TExposedFrame& frame);
  void Fill(TDeviceLock& lock, const TExposedFrame& frame, unsigned char* bytes, int sizeBytes);
  int FrameBytes(const TExposedFrame& frame) const;
  bool TransferStored(TDeviceLock& lock);
  size_t MemoryFrames() const;
  void EndIfComplete();
  void EndRun();
  /// Whether that run has ended; false for kNoRun.
  bool HasRunEnded(uint32_t run) const { return run != kNoRun && (!state_.acquiring || runNumber_ != run); }
  void WaitUntilPainted(TDeviceLock& lock);
  bool HasAnswer();
  void YieldLock(TDeviceLock& lock);
  void DiscardBuffers();
  void Wake();

  TCameraState& state_;
  TDeviceStatus& status_;
  std::mutex& deviceMutex_;

  // All guarded by deviceMutex_.
  TCameraClock clock_;
  TFrameSchedule schedule_;
  TFramePainter painter_;
  TPaintingTurn turn_; ///< makes others wait while a buffer and the painter are in use
  TFrameBuffers buffers_;
  TSensorFaults faults_;
  uint32_t runNumber_ = kNoRun;
  uint64_t frameNumber_ = 0;
  int64_t runStartNs_ = 0;

  std::condition_variable changed_; ///< for waiting callers
  std::condition_variable work_;    ///< for the camera's thread
  int waiters_ = 0;                 ///< callers waiting on `changed_`
  uint64_t blockedWaits_ = 0;       ///< those of them that wait for a frame
  bool closed_ = false;
  std::thread thread_; ///< makes the frames of a real clock
};

} // namespace vxsim
