// SPDX-License-Identifier: MIT
// Copies frames on the calling thread and closes their images on others.
#include "spool/TThreadedSpooler.h"

#include "spool/image_writing.h"
#include "spool/launching.h"
#include "utility/TQuorinLibDebugOutput.h"
#include "utility/TQuorinTaskLauncher.h"

#include <algorithm>

using QuorinUtility::TQuorinLibDebugOutput;
using QuorinUtility::TQuorinTaskLauncher;

namespace {

int BoundedCount(int count)
{
  if (count > TThreadedSpooler::kMaxThreads)
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, TQuorinLibDebugOutput::Warning,
                                  "%d spool threads are too many, there will be %d", count,
                                  TThreadedSpooler::kMaxThreads);
  return std::clamp(count, 0, TThreadedSpooler::kMaxThreads);
}

} // namespace

TThreadedSpooler::TThreadedSpooler(ISpooler* spooler, int threadCount)
    : spooler_(spooler), threadCount_(BoundedCount(threadCount))
{
  launchers_.reserve(static_cast<std::size_t>(threadCount_));
  for (int i = 0; i < threadCount_; ++i) launchers_.push_back(std::make_unique<TQuorinTaskLauncher>());
}

TThreadedSpooler::~TThreadedSpooler() = default;

int TThreadedSpooler::Spool(int index, unsigned char* buffer, int sizeBytes)
{
  if (!spooler_) return 1;
  IImage* const image = WriteImage(spooler_, index, buffer, sizeBytes);
  if (!image) return 0;
  LaunchOrExecute(threadCount_ > 0 ? launchers_[static_cast<std::size_t>(next_)].get() : nullptr, this, image);
  next_ = NextInTurn(next_, threadCount_);
  return 1;
}

void TThreadedSpooler::Execute(void* image)
{
  if (spooler_) FinishImage(*spooler_, static_cast<IImage*>(image));
}
