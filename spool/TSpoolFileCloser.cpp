// SPDX-License-Identifier: MIT
// Closes files on a thread of its own.
#include "spool/TSpoolFileCloser.h"

#include "spool/TSpoolFault.h"
#include "spool/TSpoolFile.h"

TSpoolFileCloser::TSpoolFileCloser(TSpoolFault* fault) : fault_(fault) {}

TSpoolFileCloser::~TSpoolFileCloser() = default;

void TSpoolFileCloser::Close(std::unique_ptr<TSpoolFile> file)
{
  if (launcher_.IsAlive())
    launcher_.Launch(this, file.release());
  else
    CloseNow(*file);
}

void TSpoolFileCloser::Execute(void* file)
{
  const std::unique_ptr<TSpoolFile> owned(static_cast<TSpoolFile*>(file));
  CloseNow(*owned);
}

void TSpoolFileCloser::CloseNow(TSpoolFile& file)
{
  if (const int error = file.Close()) fault_->Raise("cannot write", file.Path(), error);
}
