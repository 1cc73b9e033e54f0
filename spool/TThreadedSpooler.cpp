// SPDX-License-Identifier: MIT
// Copies frames on the calling thread and closes their images on others.
#include "spool/TThreadedSpooler.h"

#include "spool/image_writing.h"
#include "spool/launching.h"
#include "utility/TQuorinTaskLauncher.h"

TThreadedSpooler::TThreadedSpooler(ISpooler* spooler, int threadCount)
    : spooler_(spooler), launchers_(MakeLaunchers(threadCount))
{
}

TThreadedSpooler::~TThreadedSpooler() = default;

int TThreadedSpooler::Spool(int index, unsigned char* buffer, int sizeBytes)
{
  if (!spooler_) return 1;
  IImage* const image = WriteImage(spooler_, index, buffer, sizeBytes);
  if (!image) return 0;
  LaunchInTurn(launchers_, next_, this, image);
  return 1;
}

void TThreadedSpooler::Execute(void* image)
{
  if (spooler_) FinishImage(*spooler_, static_cast<IImage*>(image));
}
