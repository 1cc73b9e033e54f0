// SPDX-License-Identifier: MIT
// Writes queued frames: opening and copying on one thread, closing on others.
#include "spool/TCreateAndWriteFileTask.h"

#include "spool/image_writing.h"
#include "utility/IDispatchRoutine.h"
#include "utility/TQuorinLibDebugOutput.h"
#include "utility/TQuorinTaskLauncher.h"
#include "utility/TQuorinWorkThread.h"

#include <exception>
#include <new>

using QuorinUtility::TQuorinLibDebugOutput;
using QuorinUtility::TQuorinWorkThread;

namespace {

constexpr long kNoFrame = -1;

/// Deletes itself when it has run: launchers own no tasks, and may outlive the write task.
class TSelfDeletingTask final : public QuorinUtility::IQuorinTask
{
public:
  explicit TSelfDeletingTask(ISpooler* spooler) : task_(spooler) {}

  void Execute(void* image) override
  {
    const std::unique_ptr<TSelfDeletingTask> self(this);
    task_.Execute(image);
  }

private:
  TFlushAndCloseFileTask task_;
};

} // namespace

void TFlushAndCloseFileTask::Execute(void* image)
{
  if (spooler_) FinishImage(*spooler_, static_cast<IImage*>(image));
}

TCreateAndWriteFileTask::TCreateAndWriteFileTask(QuorinUtility::TQuorinTaskLauncher** launchers, ISpooler* spooler,
                                                 int launcherCount, TSpoolQueue* inputQueue,
                                                 TSpoolQueue* reuseQueue, IDispatchRoutine* dispatchRoutine,
                                                 bool withPerformanceLog)
    : launchers_(launchers),
      spooler_(spooler),
      launcherCount_(launchers ? launcherCount : 0),
      inputQueue_(inputQueue),
      reuseQueue_(reuseQueue),
      dispatchRoutine_(dispatchRoutine),
      performanceLog_(withPerformanceLog, "tcreateandwritefiletask.csv", "Message,Frame Number,ThreadID,Time")
{
  performanceLog_.Open();
  workThread_ = std::make_unique<TQuorinWorkThread>(this, TQuorinWorkThread::eNormalPriority, "vxmcd-spool");
}

TCreateAndWriteFileTask::~TCreateAndWriteFileTask()
{
  inputQueue_->Abort();
  workThread_->WaitForCompletion();
  if (!inputQueue_->IsEmpty())
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, TQuorinLibDebugOutput::Warning,
                                  "images behind number %d were queued and are not written",
                                  lastSavedImageIndex_.load());
}

bool TCreateAndWriteFileTask::IsAlive() const
{
  return workThread_->IsCreated();
}

void TCreateAndWriteFileTask::Run()
{
  for (TSpoolFileData data = Fetch(); !(data == endMarker_); data = Fetch()) Process(data);
}

TSpoolFileData TCreateAndWriteFileTask::Fetch()
{
  performanceLog_.Write("TTCreateAndWriteFileTask::Run fetch from queue start", kNoFrame);
  const TSpoolFileData data = inputQueue_->Retrieve();
  performanceLog_.Write("TTCreateAndWriteFileTask::Run fetch from queue end", kNoFrame);
  return data;
}

void TCreateAndWriteFileTask::Process(TSpoolFileData& data)
{
  performanceLog_.Write("TTCreateAndWriteFileTask::Run Start", data.index);
  createAndWriteFile(data);
  if (data.error == 0) delegateToFlushAndCloseTask(data.image);
  setImageSavedEvent(data.index);
  queueProcessedBufferForReuse(data);
  performanceLog_.Write("TTCreateAndWriteFileTask::Run End", data.index);
}

void TCreateAndWriteFileTask::createAndWriteFile(TSpoolFileData& data)
{
  data.image = nullptr;
  data.error = WriteFrame(spooler_, data.index, data.buffer, data.sizeBytes, data.image) ? 0 : 1;
}

void TCreateAndWriteFileTask::delegateToFlushAndCloseTask(IImage* image)
{
  auto* const task = new (std::nothrow) TSelfDeletingTask(spooler_);
  if (!task) return TFlushAndCloseFileTask(spooler_).Execute(image);
  LaunchOrExecute(launcherCount_ > 0 ? launchers_[nextLauncher_] : nullptr, task, image);
  nextLauncher_ = NextInTurn(nextLauncher_, launcherCount_);
}

void TCreateAndWriteFileTask::setImageSavedEvent(int index)
{
  lastSavedImageIndex_ = static_cast<int>(static_cast<unsigned int>(index) + 1);
  if (dispatchRoutine_) dispatchRoutine_->Signal();
}

void TCreateAndWriteFileTask::queueProcessedBufferForReuse(const TSpoolFileData& data)
{
  try {
    reuseQueue_->Queue(data);
  } catch (const std::exception& error) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "the slot of image %d cannot be returned: %s",
                                  data.index, error.what());
  }
}
