// SPDX-License-Identifier: MIT
// A camera that follows a script, for tests of the loops.
#pragma once

#include "tests/tools/ImageFixtures.h"
#include "tools/ICamera.h"
#include "vxmcd.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

namespace vxtool {

inline constexpr TImageShape kScriptedShape{4, 3, PixelDepth::Bits16};

/// A camera whose images appear while a loop waits and while it copies, as the test says. Public fields are the
/// script.
class ScriptedCamera : public ICamera
{
public:
  int slots = 8;             // of the ring
  bool isEndless = false;    // run until aborted
  int imagesPerWait = 1;     // that arrive during one wait
  int imagesPerFetch = 0;    // that arrive while one image is copied
  int imagesInRun = 1 << 30; // after which the run ends with endStatus
  int endStatus = static_cast<int>(RC_IDLE);
  long frameDropped = 0;          // image before which the camera lost two frames
  std::optional<long> lostFrames; // that it has counted itself
  int triggers = 0;
  bool isTriggered = false; // images come only after SendTrigger(), in the third wait

  std::optional<long> LostFrames() override { return lostFrames; }
  unsigned int Start() override { return RC_SUCCESS; }
  unsigned int Abort() override
  {
    isAborted_ = true;
    return RC_SUCCESS;
  }
  unsigned int Wait(int) override
  {
    const long before = newest_;
    if (!isTriggered || (triggers > newest_ && ++waits_ % 3 == 0)) Arrive(imagesPerWait);
    if (newest_ == before)
      std::this_thread::sleep_for(std::chrono::milliseconds(1)); // a wait that times out takes time
    return newest_ > before ? RC_SUCCESS : RC_NO_NEW_DATA;
  }
  unsigned int Status(int& status) override
  {
    const bool isOver = isAborted_ || newest_ >= imagesInRun;
    status = isOver ? endStatus : static_cast<int>(RC_ACQUIRING);
    return RC_SUCCESS;
  }
  unsigned int AvailableImages(int& first, int& last) override
  {
    last = static_cast<int>(newest_);
    first = isEndless ? std::max(1, last + 1 - slots) : 1;
    return newest_ < 1 ? RC_NO_NEW_DATA : RC_SUCCESS;
  }
  unsigned int TotalImages(long& count) override
  {
    count = newest_;
    return RC_SUCCESS;
  }
  unsigned int FetchImage(long number, PixelDepth, std::span<std::byte> pixels, long long& ticks) override
  {
    if (isEndless && number < newest_ + 1 - slots) return RC_NO_NEW_DATA;
    if (number > newest_) return RC_NO_NEW_DATA;
    const std::vector<std::byte> image = TestImage(kScriptedShape, number);
    std::copy(image.begin(), image.end(), pixels.begin());
    if (!isAborted_) Arrive(imagesPerFetch);
    // As in the ring: the image that arrives next goes into the buffer of image newest + 1 - slots.
    if (isEndless && number <= newest_ + 1 - slots) {
      std::fill(pixels.begin(), pixels.end(), std::byte{0xEE});
      return RC_NO_NEW_DATA;
    }
    ticks = TicksOf(number);
    return RC_SUCCESS;
  }
  unsigned int Timestamp(long number, long long& ticks) override
  {
    if (number < 1 || number > newest_) return RC_FEATURE_ERROR;
    ticks = TicksOf(number);
    return RC_SUCCESS;
  }
  unsigned int SendTrigger() override
  {
    ++triggers;
    return RC_SUCCESS;
  }

  bool IsAborted() const { return isAborted_; }

private:
  long long TicksOf(long image) const
  {
    return 1000 * (image - 1 + (frameDropped > 0 && image >= frameDropped ? 2 : 0));
  }
  void Arrive(int count) { newest_ = std::min<long>(newest_ + count, imagesInRun); }

  long newest_ = 0;
  int waits_ = 0; // for an image that was triggered
  bool isAborted_ = false;
};

} // namespace vxtool
