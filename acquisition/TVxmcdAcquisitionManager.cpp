// SPDX-License-Identifier: MIT
// Owner of everything that one camera's acquisitions need.
#include "acquisition/TVxmcdAcquisitionManager.h"

#include "acquisition/frame_timeout.h"
#include "acquisition/frame_timestamp.h"
#include "features/current_core_handle.h"
#include "features/feature_names.h"
#include "features/TSDK3Exception.h"
#include "utility/TAutoQuorinCriticalSection.h"
#include "utility/TQuorinLibDebugOutput.h"
#include "utility/TQuorinMemoryStatistics.h"
#include "vxcore.h"

#include <algorithm>
#include <limits>
#include <new>
#include <string>
#include <utility>

using QuorinUtility::TAutoQuorinCriticalSection;
using QuorinUtility::TQuorinLibDebugOutput;

namespace {

constexpr int kFrameBudgetBytes = 300000000;
constexpr int kMostSlots = 5000;
// A ring whose slots are used again: with one slot, the camera would write over every image while it is copied. The
// third one leaves the program the time of a frame.
constexpr std::int64_t kUsefulSlots = 3;
constexpr std::int64_t kFewestSlots = 2;
constexpr int kStartTimeoutMs = 1000;
constexpr int kFinishTimeoutMs = 1000;
// The queue can hold no more filled buffers than slots; a few more looks cost nothing.
constexpr std::uint64_t kDrainMargin = 16;

std::int64_t ReadFrameSize()
{
  long long frameSizeBytes = 0;
  VX_GetInt(CurrentCoreHandle(), Feature::kImageSizeBytes, &frameSizeBytes);
  return frameSizeBytes;
}

// The feature library counts a buffer's bytes in an int.
bool IsUsableFrameSize(std::int64_t frameSizeBytes)
{
  return frameSizeBytes >= 1 && frameSizeBytes <= std::numeric_limits<int>::max();
}

} // namespace

TVxmcdAcquisitionManager::TVxmcdAcquisitionManager(QuorinUtility::TQuorinCriticalSection* cameraLock,
                                                   int stopTimeoutMs)
    : ignoreQueue_(std::make_shared<TDispatchQueue_Ignore>(&circularBuffer_)),
      requeueQueue_(std::make_shared<TDispatchQueue_Requeue>(&circularBuffer_)),
      spoolQueue_(std::make_shared<TDispatchQueue_Spool>(&circularBuffer_)),
      cameraLock_(cameraLock),
      stopTimeoutMs_(stopTimeoutMs)
{
  spoolQueue_->SetDispatchRoutine(&eventDispatchRoutine_);
  requeueQueue_->SetDispatchRoutine(&eventDispatchRoutine_);
  ignoreQueue_->SetDispatchRoutine(&eventDispatchRoutine_);
  thread_ = std::make_unique<TAcquisitionThread>(&fetchQueue_, nullptr, cameraLock_, &circularBuffer_,
                                                 &eventDispatchRoutine_);
}

// The thread goes before anything it uses.
TVxmcdAcquisitionManager::~TVxmcdAcquisitionManager()
{
  Close();
  thread_.reset();
}

int TVxmcdAcquisitionManager::GetCircularBufferSize() const
{
  return kFrameBudgetBytes;
}

void TVxmcdAcquisitionManager::limitCircularBufferLengthToMaxOf5000(int& length) const
{
  length = std::min(length, kMostSlots);
}

void TVxmcdAcquisitionManager::SetSpool(bool enable, int method, const char* path)
{
  std::string text = path ? path : "";
  const std::lock_guard lock(spoolMutex_);
  spoolEnabled_ = enable;
  spoolSettings_.path = std::move(text);
  spoolSettings_.method = method;
}

void TVxmcdAcquisitionManager::SetSpoolThreadCount(int threadCount)
{
  const std::lock_guard lock(spoolMutex_);
  spoolSettings_.threadCount = threadCount;
}

std::optional<TSpoolSettings> TVxmcdAcquisitionManager::SpoolSettings() const
{
  const std::lock_guard lock(spoolMutex_);
  if (!spoolEnabled_) return std::nullopt;
  return spoolSettings_;
}

int TVxmcdAcquisitionManager::Start()
{
  const std::lock_guard lock(controlMutex_);
  try {
    return StartRun();
  } catch (const TSDK3Exception& exception) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "start refused: %s", exception.what());
    DropFrames();
    return kStartThrew;
  } catch (const std::bad_alloc&) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "start refused: out of memory");
    DropFrames();
    return kStartFailed;
  }
}

int TVxmcdAcquisitionManager::StartRun()
{
  if (closed_) return kStartFailed;
  if (!thread_->IsAlive()) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "there is no acquisition thread");
    return kStartFailed;
  }
  const std::int64_t frameSizeBytes = ReadFrameSize();
  const int timeoutMs = FrameTimeoutMs();
  if (!StopEarlierRun()) return kStartFailed;
  spoolingRun_ = false; // not before: a run that goes on must still be able to tell how it ends
  if (!IsUsableFrameSize(frameSizeBytes)) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "the camera reports frames of %lld bytes",
                                  static_cast<long long>(frameSizeBytes));
    return kStartFailed;
  }

  const int loopCount = runMode_ == kSeries ? std::max(0, imageCount_.load()) : 1;
  destroyMetadataObjects();
  int slotCount = static_cast<int>(kFrameBudgetBytes / frameSizeBytes);
  limitCircularBufferLengthToMaxOf5000(slotCount);

  if (!PrepareRun(frameSizeBytes, slotCount, loopCount)) return kStartFailed;
  SetUpRun(frameSizeBytes);
  thread_->SetLoopCount(loopCount);
  thread_->SetTimeout(timeoutMs);

  if (!StartCamera()) {
    GetDispatchQueue()->Abort();
    GetDispatchQueue()->Finalise();
    return kStartFailed;
  }
  GetDispatchQueue()->Begin();
  thread_->Start();
  thread_->WaitForBegin(kStartTimeoutMs);
  return kDone;
}

// A thread that does not stop still uses ring and queues, so nothing of them may be touched then.
bool TVxmcdAcquisitionManager::StopEarlierRun()
{
  thread_->Stop();
  if (thread_->WaitForStop(stopTimeoutMs_)) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "the earlier run has not stopped after %d ms",
                                  stopTimeoutMs_);
    return false;
  }
  {
    const TAutoQuorinCriticalSection lock(cameraLock_);
    VX_Command(CurrentCoreHandle(), Feature::kAcquisitionStop);
  }
  Flush(CurrentCoreHandle());
  return true;
}

// A run that goes on until it is aborted is never written.
bool TVxmcdAcquisitionManager::PrepareRun(std::int64_t frameSizeBytes, std::int64_t slotCount, int loopCount)
{
  if (runMode_ == kUntilAborted) return PrepareUntilAborted(frameSizeBytes, slotCount);
  if (const auto settings = SpoolSettings())
    return PrepareSpooled(frameSizeBytes, slotCount, loopCount, *settings);
  return PrepareFinite(frameSizeBytes, slotCount, loopCount);
}

bool TVxmcdAcquisitionManager::PrepareUntilAborted(std::int64_t frameSizeBytes, std::int64_t slotCount)
{
  if (!AllocateRing(frameSizeBytes, slotCount) || !QueueSlots(frameSizeBytes)) return false;
  thread_->SetContinuousMode(true);
  SetCurrentQueue(requeueQueue_);
  return true;
}

// Slots whose frames are on their way to the disk are used again, so the series may be longer than the ring.
bool TVxmcdAcquisitionManager::PrepareSpooled(std::int64_t frameSizeBytes, std::int64_t slotCount, int loopCount,
                                              const TSpoolSettings& settings)
{
  if (!AllocateRing(frameSizeBytes, slotCount) || !QueueSlots(frameSizeBytes)) return false;
  thread_->SetContinuousMode(false);
  spoolingRun_ = true;
  spoolQueue_->SetRun(settings, loopCount);
  SetCurrentQueue(spoolQueue_);
  return true;
}

// Every frame of a finite run keeps its slot.
bool TVxmcdAcquisitionManager::PrepareFinite(std::int64_t frameSizeBytes, std::int64_t slotCount,
                                             std::int64_t loopCount)
{
  if (!Allocate(frameSizeBytes, loopCount + slotCount) || !QueueSlots(frameSizeBytes)) return false;
  thread_->SetContinuousMode(false);
  SetCurrentQueue(ignoreQueue_);
  return true;
}

// Frames so large that the budget holds fewer slots than a ring needs get them if the machine has the memory.
bool TVxmcdAcquisitionManager::AllocateRing(std::int64_t frameSizeBytes, std::int64_t slotCount)
{
  if (Allocate(frameSizeBytes, std::max(slotCount, kUsefulSlots))) return true;
  return slotCount < kUsefulSlots && Allocate(frameSizeBytes, kFewestSlots);
}

bool TVxmcdAcquisitionManager::Allocate(std::int64_t frameSizeBytes, std::int64_t slots)
{
  if (circularBuffer_.Allocate(static_cast<std::uint64_t>(frameSizeBytes), static_cast<std::uint64_t>(slots)) == 0)
    return true;
  TQuorinLibDebugOutput::Output(
      __FILE__, __LINE__, __func__, "no memory for %lld frames of %lld bytes: %llu bytes are available",
      static_cast<long long>(slots), static_cast<long long>(frameSizeBytes),
      static_cast<unsigned long long>(QuorinUtility::TQuorinMemoryStatistics::Instance()->GetAvailable()));
  return false;
}

bool TVxmcdAcquisitionManager::QueueSlots(std::int64_t frameSizeBytes)
{
  const std::uint64_t count = circularBuffer_.GetBufferCount();
  for (std::uint64_t slot = 1; slot <= count; ++slot) {
    const int code =
        VX_QueueBuffer(CurrentCoreHandle(), circularBuffer_.GetBuffer(slot), static_cast<int>(frameSizeBytes));
    if (code == VX_SUCCESS) continue;
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "the camera refused slot %llu: code %d",
                                  static_cast<unsigned long long>(slot), code);
    DropFrames();
    return false;
  }
  return true;
}

void TVxmcdAcquisitionManager::SetUpRun(std::int64_t frameSizeBytes)
{
  eventDispatchRoutine_.Reset();
  createMetadataObjects();
  GetDispatchQueue()->Initialise(frameSizeBytes);
  circularBuffer_.Reset();
}

bool TVxmcdAcquisitionManager::StartCamera()
{
  const TAutoQuorinCriticalSection lock(cameraLock_);
  const int code = VX_Command(CurrentCoreHandle(), Feature::kAcquisitionStart);
  if (code != VX_SUCCESS)
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "AcquisitionStart answered %d", code);
  if (code != VX_ERR_START_REFUSED) return true;
  DropFrames();
  return false;
}

// Takes every slot back from the camera. One that does not answer may go on writing into them.
void TVxmcdAcquisitionManager::Flush(int coreHandle)
{
  if (VX_Flush(coreHandle) == VX_SUCCESS)
    circularBuffer_.LetGoOfMemory();
  else
    circularBuffer_.KeepMemory();
}

void TVxmcdAcquisitionManager::DropFrames(int coreHandle)
{
  Flush(coreHandle);
  circularBuffer_.Delete();
}

int TVxmcdAcquisitionManager::Stop()
{
  const std::lock_guard lock(controlMutex_);
  int acquiring = 0;
  int readCode = VX_SUCCESS;
  {
    const TAutoQuorinCriticalSection cameraLock(cameraLock_);
    readCode = VX_GetBool(CurrentCoreHandle(), Feature::kCameraAcquiring, &acquiring);
  }
  if (readCode == VX_SUCCESS && !acquiring) return kNotAcquiring;

  int stopCode = VX_SUCCESS;
  {
    const TAutoQuorinCriticalSection cameraLock(cameraLock_);
    stopCode = VX_Command(CurrentCoreHandle(), Feature::kAcquisitionStop);
  }
  if (stopCode != VX_SUCCESS) {
    // A camera that answers nothing at all will not end the run by itself.
    if (readCode != VX_SUCCESS) thread_->Stop();
    return kCommandFailed;
  }

  thread_->Stop();
  thread_->WaitForStop(stopTimeoutMs_);
  Flush(CurrentCoreHandle());
  Drain();
  return kDone;
}

void TVxmcdAcquisitionManager::Drain()
{
  unsigned char* buffer = nullptr;
  int sizeBytes = 0;
  const std::uint64_t most = circularBuffer_.GetBufferCount() + kDrainMargin;
  for (std::uint64_t look = 0; look < most; ++look)
    if (VX_WaitBuffer(CurrentCoreHandle(), &buffer, &sizeBytes, 0) != VX_SUCCESS) return;
}

int TVxmcdAcquisitionManager::Wait(int timeoutMs)
{
  switch (circularBuffer_.WaitChange(timeoutMs)) {
  case 2:
    return kWaitTimedOut;
  case 3:
    return kWaitCancelled;
  case 4:
    return kAcquisitionFailed;
  default:
    return kDone;
  }
}

int TVxmcdAcquisitionManager::CancelWait()
{
  circularBuffer_.CancelWait();
  return kDone;
}

void TVxmcdAcquisitionManager::FreeInternalMemory()
{
  const std::lock_guard lock(controlMutex_);
  // At the end of the run another camera may be the current one, but it is this one that holds the slots.
  const int coreHandle = CurrentCoreHandle();
  if (thread_->AtEndOfRun([this, coreHandle] { DropFrames(coreHandle); })) return;
  if (circularBuffer_.GetBufferCount() > 0) DropFrames(coreHandle);
}

void TVxmcdAcquisitionManager::Close()
{
  closed_ = true;
  circularBuffer_.CloseWaits();
  uses_.WaitUntilUnused();
}

bool TVxmcdAcquisitionManager::IsRunningAfterLastFrame()
{
  if (thread_->IsFinishing()) thread_->WaitForStop(kFinishTimeoutMs);
  return IsRunning();
}

TDispatchQueue* TVxmcdAcquisitionManager::GetDispatchQueue() const
{
  return HoldDispatchQueue().get();
}

std::shared_ptr<TDispatchQueue> TVxmcdAcquisitionManager::HoldDispatchQueue() const
{
  const std::lock_guard lock(runObjectsMutex_);
  return dispatchQueue_;
}

std::shared_ptr<TTimestampRepository> TVxmcdAcquisitionManager::GetTimestampRepository() const
{
  const std::lock_guard lock(runObjectsMutex_);
  return timestampRepository_;
}

void TVxmcdAcquisitionManager::SetCurrentQueue(std::shared_ptr<TDispatchQueue> queue)
{
  const std::lock_guard lock(runObjectsMutex_);
  dispatchQueue_ = std::move(queue);
}

bool TVxmcdAcquisitionManager::isMetadataEnabled(int coreHandle) const
{
  return IsMetadataEnabled(coreHandle);
}

void TVxmcdAcquisitionManager::createMetadataObjects()
{
  if (isMetadataEnabled(CurrentCoreHandle())) {
    auto repository = std::make_shared<TTimestampRepository>();
    auto xerox = std::make_shared<TMetadataXerox>(GetDispatchQueue(), repository.get());
    {
      const std::lock_guard lock(runObjectsMutex_);
      timestampRepository_ = std::move(repository);
      metadataXerox_ = xerox;
      dispatchQueue_ = std::move(xerox);
    }
    VX_Command(CurrentCoreHandle(), Feature::kTimestampClockReset);
  }
  thread_->SetDispatchQueue(GetDispatchQueue());
}

void TVxmcdAcquisitionManager::destroyMetadataObjects()
{
  thread_->SetDispatchQueue(nullptr);
  const std::lock_guard lock(runObjectsMutex_);
  if (!metadataXerox_ || !timestampRepository_) return;
  metadataXerox_.reset();
  timestampRepository_.reset();
  dispatchQueue_.reset();
}
