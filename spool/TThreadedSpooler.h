// SPDX-License-Identifier: MIT
// Copies frames on the calling thread and closes their images on others.
#pragma once

#include "spool/ISpoolAlgorithm.h"
#include "utility/IQuorinTask.h"

#include <memory>
#include <vector>

class IImage;
class ISpooler;

namespace QuorinUtility {
class TQuorinTaskLauncher;
}

/// Copies frames into their images at once and has the images unlocked and closed by its own threads, in turn. Small
/// frames share an image, since threads would spend more time on waking each other than on the frames. Owned by the
/// run's pipeline; borrows the spooler, which must be thread-safe and outlive Finish(). Only the constructor throws,
/// when memory is short.
class TThreadedSpooler final : public ISpoolAlgorithm, public QuorinUtility::IQuorinTask
{
public:
  /// At most kMaxLaunchers threads are made. Without a spooler frames are accepted and dropped. With a count below
  /// 1, or when threads cannot be made, images are closed on the thread that calls Spool(). Each image of the spooler
  /// has room for @p framesPerImage frames, at least 1.
  TThreadedSpooler(ISpooler* spooler, int threadCount, int framesPerImage = 1);
  /// Blocks until every image is closed.
  ~TThreadedSpooler() override;
  TThreadedSpooler(const TThreadedSpooler&) = delete;
  TThreadedSpooler& operator=(const TThreadedSpooler&) = delete;

  /// The frame is copied when it returns, so @p buffer is free again. Blocks while the thread whose turn it is
  /// closes an earlier image. Returns 0 when the image could not be opened or locked; nothing is open then, except for
  /// frames before it in the same image.
  int Spool(int index, unsigned char* buffer, int sizeBytes) override;
  /// Has the last image closed, which need not be full.
  void Finish() override;

  /// Unlocks and closes the image that @p image points to. Its own threads call it.
  void Execute(void* image) override;

private:
  void CloseImage();

  ISpooler* spooler_;
  const int framesPerImage_;
  IImage* image_ = nullptr; // being filled; null between two images
  int framesInImage_ = 0;   // of image_
  std::vector<std::unique_ptr<QuorinUtility::TQuorinTaskLauncher>> launchers_;
  int next_ = 0; // launcher
};
