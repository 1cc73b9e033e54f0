// SPDX-License-Identifier: MIT
// A spooler whose images are memory, with failures on request.
#pragma once

#include "spool/ISpooler.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
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

/// Thread-safe; the public members are set before it is used and read when it is no longer used.
class TMemorySpooler final : public ISpooler
{
public:
  int OpenImage(unsigned int index, int mode, IImage*& image) override
  {
    const std::lock_guard lock(mutex_);
    modes.push_back(mode);
    const int answer = openResult(index);
    if (answer != 0) return answer;
    TMemoryImage& opened = images[index];
    if (opened.bytes.empty()) opened.bytes.resize(sizeBytes);
    opened.isOpen = true;
    ++opened.opened;
    image = &opened;
    return 0;
  }
  int SetImageSizeBytes(std::uint64_t size) override
  {
    sizeBytes = size;
    return result;
  }
  int SetPath(const wchar_t* /*path*/) override { return result; }
  int SetStem(const wchar_t* /*stem*/) override { return result; }
  int CloseImage(IImage* image) override
  {
    beforeClose();
    const std::lock_guard lock(mutex_);
    auto& closing = static_cast<TMemoryImage&>(*image);
    closing.isOpen = false;
    ++closing.closed;
    closing.closedBy = std::this_thread::get_id();
    return result;
  }
  int Remove() override { return result; }

  int OpenImages()
  {
    const std::lock_guard lock(mutex_);
    return static_cast<int>(
        std::count_if(images.begin(), images.end(), [](const auto& image) { return image.second.isOpen; }));
  }

  std::map<unsigned int, TMemoryImage> images;
  std::uint64_t sizeBytes = 0;
  std::vector<int> modes;
  std::function<int(unsigned int)> openResult = [](unsigned int) { return 0; };
  std::function<void()> beforeClose = [] {}; ///< on the closing thread, without a lock
  int result = 0;                            ///< of the operations that have no other

private:
  std::mutex mutex_;
};
