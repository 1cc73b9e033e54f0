// SPDX-License-Identifier: MIT
// Images that wait in their slots for being written.
#include "features/current_core_handle.h"
#include "spool/TQueuedSpooler.h"
#include "spool/TSpoolFault.h"
#include "tests/spool/TMemorySpooler.h"

#include <array>
#include <chrono>
#include <functional>
#include <future>
#include <gtest/gtest.h>

namespace {

constexpr int kSlots = 2;

/// A disk that blocks until the test releases it.
class QueuedSpooler : public testing::Test
{
protected:
  QueuedSpooler()
  {
    images_.SetImageSizeBytes(1);
    images_.openResult = [this](unsigned int) { return disk_.wait(), openResult_; };
  }

  /// Spools one image more than fits into the slots behind a disk that stands still; @p event must end the wait.
  void ExpectItEndsTheWait(const std::function<void()>& event)
  {
    for (int image = 0; image + 1 < kSlots; ++image) EXPECT_EQ(Spool(image), 1);
    auto last = std::async(std::launch::async, [this] { return Spool(kSlots - 1); });
    EXPECT_EQ(last.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout) << "no slot is left";
    event();
    EXPECT_EQ(last.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    EXPECT_EQ(last.get(), 1);
  }

  int Spool(int image) { return spooler_.Spool(image, &frames_[static_cast<std::size_t>(image)], 1); }

  TMemorySpooler images_;
  TSpoolFault fault_;
  std::promise<void> go_;
  std::shared_future<void> disk_{go_.get_future()};
  int openResult_ = 0;
  std::array<unsigned char, kSlots> frames_{};
  TQueuedSpooler spooler_{&images_, &fault_, 1, kSlots, kNoCoreHandle};
};

} // namespace

TEST_F(QueuedSpooler, WaitsForASlotToComeBack)
{
  ExpectItEndsTheWait([this] { go_.set_value(); });
  spooler_.Finish();
  EXPECT_EQ(images_.images.size(), std::size_t{kSlots});
}

TEST_F(QueuedSpooler, WaitsNoLongerWhenTheRunIsAborted)
{
  ExpectItEndsTheWait([this] { spooler_.Abort(); });
  go_.set_value();
}

TEST_F(QueuedSpooler, WaitsNoLongerWhenAnImageCannotBeWritten)
{
  openResult_ = 28;
  ExpectItEndsTheWait([this] { go_.set_value(); });
  EXPECT_TRUE(fault_.IsRaised());
}
