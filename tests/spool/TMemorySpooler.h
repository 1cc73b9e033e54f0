// SPDX-License-Identifier: MIT
// A spooler whose images are memory, with failures on request.
#pragma once

#include "spool/ISpooler.h"

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// One image in memory. What was written stays when it is closed.
class TMemoryImage final : public IImage
{
public:
  int Lock(unsigned char*& destination) override
  {
    const int result = lockResult();
    if (result == 0) {
      ++locks;
      destination = bytes.data();
    }
    return result;
  }
  int Unlock() override
  {
    ++unlocks;
    return unlockResult;
  }

  std::vector<unsigned char> bytes;
  std::function<int()> lockResult = [] { return 0; };
  int unlockResult = 0;
  std::atomic<int> locks{0};
  std::atomic<int> unlocks{0};
  bool isOpen = false;
  int opened = 0; ///< how often
  int closed = 0;
  std::thread::id closedBy;
};

/// Thread-safe; the public members are set before it is used and read when nobody uses it any more.
class TMemorySpooler final : public ISpooler
{
public:
  int OpenImage(unsigned int index, int mode, IImage*& image) override;
  int SetImageSizeBytes(std::uint64_t sizeBytes) override;
  int SetPath(const wchar_t* path) override { return Note(L"path ", path); }
  int SetStem(const wchar_t* stem) override { return Note(L"stem ", stem); }
  int CloseImage(IImage* image) override;
  int Remove() override { return Note(L"remove", L""); }

  int OpenImages();

  std::map<unsigned int, TMemoryImage> images;
  std::uint64_t sizeBytes = 0;
  std::vector<int> modes;
  std::wstring notes;
  std::function<int(unsigned int)> openResult = [](unsigned int) { return 0; };
  std::function<void()> beforeClose = [] {}; ///< on the closing thread, without a lock
  int result = 0;                            ///< of the operations that have no other
  std::atomic<int> overlaps{0};              ///< calls of OpenImage() and CloseImage() during another one

private:
  int Note(const wchar_t* what, const wchar_t* value);

  std::atomic<int> calls_{0};
  std::mutex mutex_;
};
