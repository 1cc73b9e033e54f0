// SPDX-License-Identifier: MIT
// Owner of everything that one camera's acquisitions need.
#include "acquisition/TVxmcdAcquisitionManager.h"

#include "acquisition/frame_timeout.h"
#include "acquisition/frame_timestamp.h"
#include "acquisition/TRunCamera.h"
#include "features/device_access.h"
#include "features/feature_access.h"
#include "features/feature_names.h"
#include "features/TSDK3Exception.h"
#include "utility/TAutoQuorinCriticalSection.h"
#include "utility/TQuorinLibDebugOutput.h"
#include "utility/TQuorinMemoryStatistics.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <new>
#include <string>
#include <utility>

using QuorinUtility::TAutoQuorinCriticalSection;
using QuorinUtility::TQuorinLibDebugOutput;

namespace {

constexpr int kFrameBudgetBytes = 300000000;
constexpr int kMaxSlots = 5000;
// A ring whose slots are used again: with one slot, the camera would write over every image while it is copied. The
// third one leaves the program the time of a frame.
constexpr std::int64_t kUsefulSlots = 3;
constexpr std::int64_t kMinSlots = 2;
constexpr int kStartTimeoutMs = 1000;
constexpr int kFinishTimeoutMs = 1000;
constexpr int kProgressPollMs = 50;
// The camera has no more filled buffers than there are slots; a few more looks cost nothing.
constexpr std::uint64_t kDrainMargin = 16;

std::int64_t ReadFrameSize(int coreHandle)
{
  long long frameSizeBytes = 0;
  ReadInt(coreHandle, Feature::kImageSizeBytes, frameSizeBytes);
  return frameSizeBytes;
}

// The feature library counts a buffer's bytes in an int.
bool IsUsableFrameSize(std::int64_t frameSizeBytes)
{
  return frameSizeBytes >= 1 && frameSizeBytes <= std::numeric_limits<int>::max();
}

} // namespace

TVxmcdAcquisitionManager::TVxmcdAcquisitionManager(QuorinUtility::TQuorinCriticalSection* cameraLock,
                                                   int coreHandle, int stopTimeoutMs)
    : coreHandle_(coreHandle),
      ignoreQueue_(std::make_shared<TDispatchQueue_Ignore>(&circularBuffer_, coreHandle)),
      requeueQueue_(std::make_shared<TDispatchQueue_Requeue>(&circularBuffer_, coreHandle)),
      spoolQueue_(std::make_shared<TDispatchQueue_Spool>(&circularBuffer_, coreHandle)),
      cameraLock_(cameraLock),
      stopTimeoutMs_(stopTimeoutMs)
{
  spoolQueue_->SetDispatchRoutine(&eventDispatchRoutine_);
  requeueQueue_->SetDispatchRoutine(&eventDispatchRoutine_);
  ignoreQueue_->SetDispatchRoutine(&eventDispatchRoutine_);
  thread_ = std::make_unique<TAcquisitionThread>(&fetchQueue_, nullptr, cameraLock_, &circularBuffer_,
                                                 &eventDispatchRoutine_);
}

// The thread is destroyed before anything it uses.
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
  length = std::min(length, kMaxSlots);
}

void TVxmcdAcquisitionManager::SetSpool(bool enable, int method, const char* path)
{
  std::string text = path ? path : "";
  const TLock lock(spoolMutex_);
  spoolEnabled_ = enable;
  spoolSettings_.path = std::move(text);
  spoolSettings_.method = method;
}

void TVxmcdAcquisitionManager::SetSpoolThreadCount(int threadCount)
{
  const TLock lock(spoolMutex_);
  spoolSettings_.threadCount = threadCount;
}

std::optional<TSpoolSettings> TVxmcdAcquisitionManager::SpoolSettings() const
{
  const TLock lock(spoolMutex_);
  if (!spoolEnabled_) return std::nullopt;
  return spoolSettings_;
}

std::optional<TSpoolSpace> TVxmcdAcquisitionManager::SpoolSpace() const
{
  const TRunPlan plan = Plan();
  const std::optional<TSpoolSettings> settings = SpoolSettings();
  const std::int64_t frameSizeBytes = ReadFrameSize(coreHandle_);
  if (plan.runMode == kUntilAborted || !settings || !IsUsableFrameSize(frameSizeBytes)) return std::nullopt;
  const auto images = static_cast<std::uint32_t>(plan.loopCount);
  return TSpoolSpace::Measure(
      settings->path, TSpoolLayout::Choose(settings->method, static_cast<std::uint64_t>(frameSizeBytes), images),
      images);
}

int TVxmcdAcquisitionManager::Start()
{
  const TLock lock(controlMutex_);
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
  auto camera = std::make_shared<const TRunCamera>(coreHandle_);
  const std::int64_t frameSizeBytes = ReadFrameSize(coreHandle_);
  const int timeoutMs = FrameTimeoutMs(coreHandle_);
  if (!EndEarlierRun()) return kStartFailed;
  spoolingRun_ = false; // not before: IsSpoolIssues() must stay right for a run that goes on
  if (!IsUsableFrameSize(frameSizeBytes)) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "the camera reports frames of %lld bytes",
                                  static_cast<long long>(frameSizeBytes));
    return kStartFailed;
  }

  const TRunPlan plan = Plan();
  destroyMetadataObjects();
  runIsIndependent_ = camera->IsIndependent();
  circularBuffer_.SetSharesBudget(runIsIndependent_);
  int slotCount = static_cast<int>(kFrameBudgetBytes / frameSizeBytes);
  limitCircularBufferLengthToMaxOf5000(slotCount);

  if (!PrepareRun(plan, frameSizeBytes, slotCount)) return kStartFailed;
  SetUpRun(frameSizeBytes);
  thread_->SetLoopCount(plan.loopCount);
  thread_->SetTimeout(timeoutMs);

  const int code = StartCamera();
  if (code == VX_ERR_START_REFUSED) {
    GetDispatchQueue()->Abort();
    GetDispatchQueue()->Finalise();
    return kStartFailed;
  }
  if (code == VX_SUCCESS) GetDispatchQueue()->Begin();
  thread_->Start(std::move(camera));
  thread_->WaitForBegin(kStartTimeoutMs);
  return kDone;
}

TVxmcdAcquisitionManager::TRunPlan TVxmcdAcquisitionManager::Plan() const
{
  const int runMode = runMode_;
  return {runMode, runMode == kSeries ? std::max(0, imageCount_.load()) : 1};
}

// A thread that does not stop still uses ring and queues, so nothing of them may be touched then.
bool TVxmcdAcquisitionManager::EndEarlierRun()
{
  if (!thread_->IsFinishing()) {
    thread_->Stop();
    if (thread_->IsStarted()) StopCamera(); // which ends the thread's wait for a frame
  }
  if (!WaitForEndOfRun()) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__,
                                  "the earlier run has not ended: no progress for %d ms, or an abort meanwhile",
                                  stopTimeoutMs_);
    return false;
  }
  StopCamera();
  Flush();
  return true;
}

// A run that writes its frames to a slow disk may take long to end.
bool TVxmcdAcquisitionManager::WaitForEndOfRun()
{
  using TClock = std::chrono::steady_clock;
  const std::uint64_t stopsBefore = stops_;
  const auto queue = SharedDispatchQueue();
  const auto progress = [&queue] { return queue ? queue->Progress() : 0; };
  std::uint64_t lastSeen = progress();
  TClock::time_point lastMoved = TClock::now();
  while (thread_->WaitForStop(std::min(kProgressPollMs, stopTimeoutMs_))) {
    if (stops_ != stopsBefore) return false;
    const TClock::time_point now = TClock::now();
    if (const std::uint64_t present = progress(); present != lastSeen) {
      lastSeen = present;
      lastMoved = now;
    } else if (now - lastMoved >= std::chrono::milliseconds(stopTimeoutMs_)) {
      return false;
    }
  }
  return true;
}

bool TVxmcdAcquisitionManager::FinishDeliveredRun()
{
  return !thread_->IsFinishing() || WaitForEndOfRun();
}

int TVxmcdAcquisitionManager::StopCamera()
{
  const TAutoQuorinCriticalSection lock(cameraLock_);
  return SendCommand(coreHandle_, Feature::kAcquisitionStop);
}

// A run that goes on until it is aborted is never written.
bool TVxmcdAcquisitionManager::PrepareRun(const TRunPlan& plan, std::int64_t frameSizeBytes,
                                          std::int64_t slotCount)
{
  if (plan.runMode == kUntilAborted) return PrepareUntilAborted(frameSizeBytes, slotCount);
  if (const auto settings = SpoolSettings())
    return PrepareSpooled(frameSizeBytes, slotCount, plan.loopCount, *settings);
  return PrepareFinite(frameSizeBytes, slotCount, plan.loopCount);
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

// Where frames are so large that the budget is too small for the slots that a ring needs, the ring exceeds the budget.
bool TVxmcdAcquisitionManager::AllocateRing(std::int64_t frameSizeBytes, std::int64_t slotCount)
{
  if (Allocate(frameSizeBytes, std::max(slotCount, kUsefulSlots))) return true;
  return slotCount < kUsefulSlots && Allocate(frameSizeBytes, kMinSlots);
}

bool TVxmcdAcquisitionManager::Allocate(std::int64_t frameSizeBytes, std::int64_t slots)
{
  if (circularBuffer_.Allocate(static_cast<std::uint64_t>(frameSizeBytes), static_cast<std::uint64_t>(slots)) == 0)
    return true;
  TQuorinLibDebugOutput::Output(
      __FILE__, __LINE__, __func__,
      "no memory for %lld frames of %lld bytes: %lld bytes wanted, %llu available; rings of other cameras have "
      "%llu, and independent cameras may have %llu together",
      static_cast<long long>(slots), static_cast<long long>(frameSizeBytes),
      static_cast<long long>(slots) * static_cast<long long>(frameSizeBytes),
      static_cast<unsigned long long>(QuorinUtility::TQuorinMemoryStatistics::Instance()->GetAvailable()),
      static_cast<unsigned long long>(circularBuffer_.BytesOfOtherRings()),
      static_cast<unsigned long long>(TRingMemory::BudgetBytes()));
  return false;
}

bool TVxmcdAcquisitionManager::QueueSlots(std::int64_t frameSizeBytes)
{
  const std::uint64_t count = circularBuffer_.GetBufferCount();
  for (std::uint64_t slot = 1; slot <= count; ++slot) {
    const int code = QueueBuffer(coreHandle_, circularBuffer_.GetBuffer(slot), static_cast<int>(frameSizeBytes));
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

// Any answer but a refusal is accepted: the camera may run nevertheless.
int TVxmcdAcquisitionManager::StartCamera()
{
  const TAutoQuorinCriticalSection lock(cameraLock_);
  const int code = SendCommand(coreHandle_, Feature::kAcquisitionStart);
  if (code != VX_SUCCESS)
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "AcquisitionStart answered %d", code);
  if (code == VX_ERR_START_REFUSED) DropFrames();
  return code;
}

// Takes every slot back from the camera. A camera that does not answer may go on writing into them.
void TVxmcdAcquisitionManager::Flush()
{
  if (FlushBuffers(coreHandle_) == VX_SUCCESS)
    circularBuffer_.UnpinMemory();
  else
    circularBuffer_.PinMemory();
}

void TVxmcdAcquisitionManager::DropFrames()
{
  Flush();
  circularBuffer_.Delete();
}

// The camera is asked before the lock is acquired: a start may own it while it waits for the disk.
int TVxmcdAcquisitionManager::Stop()
{
  ++stops_;
  int acquiring = 0;
  int readCode = VX_SUCCESS;
  {
    const TAutoQuorinCriticalSection cameraLock(cameraLock_);
    readCode = ReadBool(coreHandle_, Feature::kCameraAcquiring, acquiring);
  }
  if (readCode == VX_SUCCESS && !acquiring) return kNotAcquiring;

  const TLock lock(controlMutex_);
  thread_->BeginStopAttempt();
  if (StopCamera() != VX_SUCCESS) {
    thread_->EndStopAttempt();
    // A camera that answers nothing at all will not end the run by itself.
    if (readCode != VX_SUCCESS) thread_->Stop();
    return kCommandFailed;
  }

  thread_->Stop();
  thread_->WaitForStop(stopTimeoutMs_);
  Flush();
  Drain();
  return kDone;
}

void TVxmcdAcquisitionManager::Drain()
{
  unsigned char* buffer = nullptr;
  int sizeBytes = 0;
  const std::uint64_t most = circularBuffer_.GetBufferCount() + kDrainMargin;
  for (std::uint64_t look = 0; look < most; ++look)
    if (WaitBuffer(coreHandle_, buffer, sizeBytes, 0) != VX_SUCCESS) return;
}

int TVxmcdAcquisitionManager::Wait(int timeoutMs)
{
  switch (circularBuffer_.WaitChange(timeoutMs)) {
  case TChangeWaits::kTimedOut:
    return kWaitTimedOut;
  case TChangeWaits::kCancelled:
    return kWaitCancelled;
  case TChangeWaits::kFailed:
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
  const TLock lock(controlMutex_);
  if (thread_->AtEndOfRun([this] { DropFrames(); })) return;
  if (circularBuffer_.GetBufferCount() > 0) DropFrames();
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
  return SharedDispatchQueue().get();
}

std::shared_ptr<TDispatchQueue> TVxmcdAcquisitionManager::SharedDispatchQueue() const
{
  const TLock lock(runObjectsMutex_);
  return dispatchQueue_;
}

std::shared_ptr<TTimestampRepository> TVxmcdAcquisitionManager::GetTimestampRepository() const
{
  const TLock lock(runObjectsMutex_);
  return timestampRepository_;
}

void TVxmcdAcquisitionManager::SetCurrentQueue(std::shared_ptr<TDispatchQueue> queue)
{
  const TLock lock(runObjectsMutex_);
  dispatchQueue_ = std::move(queue);
}

bool TVxmcdAcquisitionManager::isMetadataEnabled(int coreHandle) const
{
  return IsMetadataEnabled(coreHandle);
}

void TVxmcdAcquisitionManager::createMetadataObjects()
{
  if (isMetadataEnabled(coreHandle_)) {
    auto repository = std::make_shared<TTimestampRepository>();
    auto xerox = std::make_shared<TMetadataXerox>(GetDispatchQueue(), repository.get());
    {
      const TLock lock(runObjectsMutex_);
      timestampRepository_ = std::move(repository);
      metadataXerox_ = xerox;
      dispatchQueue_ = std::move(xerox);
    }
    SendCommand(coreHandle_, Feature::kTimestampClockReset);
  }
  thread_->SetDispatchQueue(GetDispatchQueue());
}

void TVxmcdAcquisitionManager::destroyMetadataObjects()
{
  thread_->SetDispatchQueue(nullptr);
  const TLock lock(runObjectsMutex_);
  if (!metadataXerox_ || !timestampRepository_) return;
  metadataXerox_.reset();
  timestampRepository_.reset();
  dispatchQueue_.reset();
}
