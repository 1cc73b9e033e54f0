// SPDX-License-Identifier: MIT
// Closes files on a thread of its own.
#include "spool/TSpoolFileCloser.h"

#include "spool/launching.h"
#include "spool/TSpoolFault.h"
#include "spool/TSpoolFile.h"

TSpoolFileCloser::TSpoolFileCloser(TSpoolFault* fault) : fault_(fault) {}

TSpoolFileCloser::~TSpoolFileCloser() = default;

void TSpoolFileCloser::Close(std::unique_ptr<TSpoolFile> file)
{
  LaunchOrExecute(&launcher_, this, file.release());
}

void TSpoolFileCloser::Execute(void* file)
{
  const std::unique_ptr<TSpoolFile> owned(static_cast<TSpoolFile*>(file));
  if (const int error = owned->Close()) fault_->Raise("cannot write", owned->Path(), error);
}
