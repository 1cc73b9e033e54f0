// SPDX-License-Identifier: MIT
// A dispatch queue whose frames and answers a test sets.
#pragma once

#include "acquisition/TDispatchQueue.h"

#include <functional>
#include <map>
#include <vector>

/// Stub with public fields. Counts holds, so that a test sees one that is not given back.
class ScriptedQueue final : public TDispatchQueue
{
public:
  std::map<int, std::vector<unsigned char>> frames;
  std::vector<unsigned char> latest;
  std::int64_t minimum = 0;
  std::int64_t maximum = 0;
  std::int64_t imageSizeBytes = 0;
  int holds = 0;
  int holdsTaken = 0;
  std::function<bool(int)> isIntact = [](int) { return true; };
  std::function<void(int)> onGetImage = [](int) {};

  /// Adds the next frame of the run.
  void Push(std::vector<unsigned char> frame)
  {
    imageSizeBytes = static_cast<std::int64_t>(frame.size());
    if (minimum == 0) minimum = 1;
    frames[static_cast<int>(++maximum)] = std::move(frame);
  }

  /// Forgets the oldest frame, as if the camera had written over it.
  void DropOldest() { frames.erase(static_cast<int>(minimum++)); }

  unsigned char* GetLatestImage() override { return latest.empty() ? nullptr : latest.data(); }
  unsigned char* GetImage8(int image) override
  {
    onGetImage(image);
    unsigned char* frame = GetImage(image);
    if (frame) {
      ++holds;
      ++holdsTaken;
    }
    return frame;
  }
  void ReleaseImage8(unsigned char*) override { --holds; }
  unsigned char* GetImage(int image) override
  {
    const auto found = frames.find(image);
    return found == frames.end() ? nullptr : found->second.data();
  }
  std::int64_t GetMinimumImageAvailable() override { return minimum; }
  std::int64_t GetMaximumImageAvailable() override { return maximum; }
  std::int64_t GetImageSizeBytes() override { return imageSizeBytes; }
  bool IsImageIntact(int image) override { return isIntact(image); }
  bool IsSlot(const unsigned char*) override { return true; }

  void Initialise(std::int64_t) override {}
  void Finalise() override {}
  void Abort() override {}
  int Dispatch(unsigned char*, int) override { return 0; }
  void SetDispatchRoutine(IDispatchRoutine*) override {}
};
