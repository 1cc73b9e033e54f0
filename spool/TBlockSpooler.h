// SPDX-License-Identifier: MIT
// Spools small images, many at a time.
#pragma once

#include "spool/ISpoolAlgorithm.h"
#include "spool/TFlushAndCloseFileTask.h"

#include <cstdint>
#include <memory>
#include <vector>

class IImage;
class ISpooler;
class TSerialMultiImage;

namespace QuorinUtility {
class TQuorinTaskLauncher;
}

/// Copies small images one behind the other into blocks (TSerialMultiImage over a place of the spooler), and hands
/// each block that is full to a launcher, which unlocks and closes it. With a hand-over for every image, threads
/// would spend more time on waking each other than on the images. The launchers get blocks in turn. Owned by the
/// run's pipeline; borrows the spooler, whose places must be TSpooledImage. Spool() belongs to one thread.
class TBlockSpooler final : public ISpoolAlgorithm
{
public:
  /// With fewer than one thread, blocks are unlocked and closed by the calling thread.
  TBlockSpooler(ISpooler* spooler, std::uint64_t imageSizeBytes, std::uint32_t imagesPerBlock, int threadCount);
  /// Hands over the last block, which need not be full, and waits until the launchers have done their work.
  ~TBlockSpooler() override;

  int Spool(int index, unsigned char* buffer, int sizeBytes) override;

private:
  bool BeginBlock(int index);
  void EndBlock();

  ISpooler* const spooler_;
  const std::uint64_t imageSizeBytes_;
  const std::uint32_t imagesPerBlock_;
  TFlushAndCloseFileTask closeTask_;
  IImage* place_ = nullptr; // of the block being filled; null between blocks
  std::unique_ptr<TSerialMultiImage> block_;
  std::uint32_t filled_ = 0;
  int next_ = 0;                                                               // launcher
  std::vector<std::unique_ptr<QuorinUtility::TQuorinTaskLauncher>> launchers_; // last: they use the task
};
