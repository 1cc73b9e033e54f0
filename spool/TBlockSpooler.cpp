// SPDX-License-Identifier: MIT
// Spools small images, many at a time.
#include "spool/TBlockSpooler.h"

#include "features/TSDK3Exception.h"
#include "spool/IImage.h"
#include "spool/ISpooler.h"
#include "spool/launching.h"
#include "spool/TSerialMultiImage.h"
#include "spool/TSpooledImage.h"
#include "utility/TQuorinLibDebugOutput.h"
#include "utility/TQuorinTaskLauncher.h"

#include <cstring>

using QuorinUtility::TQuorinLibDebugOutput;

TBlockSpooler::TBlockSpooler(ISpooler* spooler, std::uint64_t imageSizeBytes, std::uint32_t imagesPerBlock,
                             int threadCount)
    : spooler_(spooler),
      imageSizeBytes_(imageSizeBytes),
      imagesPerBlock_(imagesPerBlock),
      closeTask_(spooler),
      launchers_(MakeLaunchers(threadCount))
{
}

TBlockSpooler::~TBlockSpooler()
{
  Finish();
}

int TBlockSpooler::Spool(int index, unsigned char* buffer, int sizeBytes)
{
  try {
    if (!block_ && !BeginBlock(index)) return 0;
    unsigned char* destination = nullptr;
    if (block_->Lock(destination) != 0) return 0;
    std::memcpy(destination, buffer, static_cast<std::size_t>(sizeBytes));
    static_cast<TSpooledImage*>(place_)->Take();
  } catch (const TSDK3Exception& exception) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "image %d: %s", index, exception.what());
    return 0;
  }
  if (++filled_ == imagesPerBlock_) EndBlock();
  return 1;
}

bool TBlockSpooler::BeginBlock(int index)
{
  const unsigned int block = static_cast<unsigned int>(index) / imagesPerBlock_;
  if (spooler_->OpenImage(block, ISpooler::kReadWrite, place_) != 0) return false;
  filled_ = 0;
  block_ = std::make_unique<TSerialMultiImage>(place_, imageSizeBytes_, imagesPerBlock_);
  return true;
}

// The place is unlocked by the task, for all of the block's images at once.
void TBlockSpooler::EndBlock()
{
  block_.reset();
  const int count = static_cast<int>(launchers_.size());
  LaunchOrExecute(count > 0 ? launchers_[static_cast<std::size_t>(next_)].get() : nullptr, &closeTask_, place_);
  next_ = NextInTurn(next_, count);
}

void TBlockSpooler::Finish()
{
  if (block_) EndBlock();
  launchers_.clear();
}
