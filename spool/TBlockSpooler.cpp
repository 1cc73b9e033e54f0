// SPDX-License-Identifier: MIT
// Spools small images, many at a time.
#include "spool/TBlockSpooler.h"

#include "spool/IImage.h"
#include "spool/ISpooler.h"
#include "spool/launching.h"
#include "spool/TSerialMultiImage.h"
#include "spool/TSpooledImage.h"
#include "utility/TQuorinLibDebugOutput.h"
#include "utility/TQuorinTaskLauncher.h"

#include <cstring>
#include <exception>
#include <utility>

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
  if (block_) EndBlock();
}

int TBlockSpooler::Spool(int index, unsigned char* buffer, int sizeBytes)
{
  try {
    if (!block_ && !BeginBlock(index)) return 0;
    unsigned char* destination = nullptr;
    if (block_->Lock(destination) != 0) return 0;
    std::memcpy(destination, buffer, static_cast<std::size_t>(sizeBytes));
    static_cast<TSpooledImage*>(place_)->Take();
  } catch (const std::exception& error) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "image %d: %s", index, error.what());
    return 0;
  }
  if (++filled_ == imagesPerBlock_) EndBlock();
  return 1;
}

bool TBlockSpooler::BeginBlock(int index)
{
  const unsigned int block = static_cast<unsigned int>(index) / imagesPerBlock_;
  IImage* place = nullptr;
  if (spooler_->OpenImage(block, ISpooler::kReadWrite, place) != 0) return false;
  block_ = std::make_unique<TSerialMultiImage>(place, imageSizeBytes_, imagesPerBlock_);
  place_ = place;
  filled_ = 0;
  return true;
}

// The place is unlocked by the task, for all of the block's images at once.
void TBlockSpooler::EndBlock()
{
  block_.reset();
  LaunchInTurn(launchers_, next_, &closeTask_, std::exchange(place_, nullptr));
}
