// SPDX-License-Identifier: MIT
// A dispatch queue whose frames and answers a test sets.
#pragma once

#include "acquisition/TDispatchQueue.h"

#include <functional>
#include <map>
#include <vector>

/// Stub with public fields. Counts references, so that a test sees one that is not released.
class ScriptedQueue final : public TDispatchQueue
{
public:
  std::map<std::int64_t, std::vector<unsigned char>> frames;
  std::map<std::int64_t, std::int64_t> ticks;
  std::int64_t minimum = 0;
  std::int64_t maximum = 0;
  std::int64_t imageSizeBytes = 0;
  int references = 0;
  int referencesTaken = 0;
  std::function<bool(std::int64_t)> isIntact = [](std::int64_t) { return true; };
  std::function<void(std::int64_t)> onGetImage = [](std::int64_t) {};

  /// Adds the next frame of the run.
  void Push(std::vector<unsigned char> frame)
  {
    imageSizeBytes = static_cast<std::int64_t>(frame.size());
    if (minimum == 0) minimum = 1;
    frames[++maximum] = std::move(frame);
  }

  /// Forgets the oldest frame, as if the camera had written over it.
  void DropOldest() { frames.erase(minimum++); }

  unsigned char* GetLatestImage() override { return nullptr; }
  unsigned char* GetImage8(int image) override { return AcquireImage(image).bytes; }
  TFrameMemory AcquireImage(std::int64_t image) override
  {
    onGetImage(image);
    const auto found = frames.find(image);
    if (found == frames.end()) return {};
    ++references;
    ++referencesTaken;
    return {found->second.data(), static_cast<std::int64_t>(found->second.size())};
  }
  void ReleaseImage8(unsigned char*) override { --references; }
  unsigned char* GetImage(int image) override
  {
    const auto found = frames.find(image);
    return found == frames.end() ? nullptr : found->second.data();
  }
  std::int64_t GetMinimumImageAvailable() override { return minimum; }
  std::int64_t GetMaximumImageAvailable() override { return maximum; }
  std::int64_t GetImageSizeBytes() override { return imageSizeBytes; }
  bool IsImageIntact(std::int64_t image, const unsigned char*) override { return isIntact(image); }
  std::optional<std::int64_t> GetImageTicks(std::int64_t image) override
  {
    const auto found = ticks.find(image);
    return found == ticks.end() ? std::nullopt : std::optional(found->second);
  }
  bool IsSlot(const unsigned char*) override { return true; }

  void Initialise(std::int64_t) override {}
  void Finalise() override {}
  void Abort() override {}
  int Dispatch(unsigned char*, int) override { return 0; }
  void SetDispatchRoutine(IDispatchRoutine*) override {}
};
