// SPDX-License-Identifier: MIT
// Closes files on a thread of its own.
#pragma once

#include "utility/IQuorinTask.h"
#include "utility/TQuorinTaskLauncher.h"

#include <memory>

class TSpoolFault;
class TSpoolFile;

/// Brings files to the disk and closes them, one after another, on a thread of its own: that may take as long as
/// the disk needs for a whole file, in which the next one can be opened and filled. When that is full too, whoever
/// closes its last place waits, and with it everybody who opens or closes another one. Owned by the file spooler;
/// borrows the fault. Thread-safe.
class TSpoolFileCloser final : private QuorinUtility::IQuorinTask
{
public:
  explicit TSpoolFileCloser(TSpoolFault* fault);
  /// Waits until all files are closed.
  ~TSpoolFileCloser() override;

  /// Closes the file, now or a little later; waits while an earlier one is still being closed.
  void Close(std::unique_ptr<TSpoolFile> file);

private:
  void Execute(void* file) override;

  TSpoolFault* fault_;
  QuorinUtility::TQuorinTaskLauncher launcher_;
};
