// SPDX-License-Identifier: MIT
// Copies frames on the calling thread and closes their images on others.
#include "spool/TThreadedSpooler.h"

#include "spool/image_writing.h"
#include "utility/TQuorinTaskLauncher.h"

#include <utility>

TThreadedSpooler::TThreadedSpooler(ISpooler* spooler, int threadCount, int framesPerImage)
    : spooler_(spooler), framesPerImage_(framesPerImage), launchers_(MakeLaunchers(threadCount))
{
}

TThreadedSpooler::~TThreadedSpooler()
{
  Finish();
}

int TThreadedSpooler::Spool(int index, unsigned char* buffer, int sizeBytes)
{
  if (!spooler_) return 1;
  const int image = index < 0 ? index : index / framesPerImage_;
  if (!WriteFrame(spooler_, image, buffer, sizeBytes, image_)) return 0;
  if (++framesInImage_ < framesPerImage_) return UnlockImage(*image_) ? 1 : 0;
  CloseImage();
  return 1;
}

// Unlocked on the other thread, which is when the image is written.
void TThreadedSpooler::CloseImage()
{
  framesInImage_ = 0;
  LaunchOrExecute(launchers_.empty() ? nullptr : launchers_[static_cast<std::size_t>(next_)].get(), this,
                  std::exchange(image_, nullptr));
  next_ = NextInTurn(next_, static_cast<int>(launchers_.size()));
}

void TThreadedSpooler::Execute(void* image)
{
  if (spooler_) FinishImage(*spooler_, static_cast<IImage*>(image));
}

void TThreadedSpooler::Finish()
{
  if (image_) CloseImage();
  launchers_.clear();
}
