// SPDX-License-Identifier: MIT
// Frames copied on the caller's thread, images closed on others.
#include "spool/TThreadedSpooler.h"

#include "spool/image_writing.h"
#include "tests/spool/TMemorySpooler.h"
#include "tests/spool/WriteFailures.h"
#include "tests/utility/SystemCalls.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <gtest/gtest.h>
#include <set>

namespace {

constexpr int kSize = 64;

std::array<unsigned char, kSize> Frame(int number)
{
  std::array<unsigned char, kSize> frame;
  frame.fill(static_cast<unsigned char>(number + 1));
  return frame;
}

class ThreadedSpooler : public testing::Test
{
protected:
  void SetUp() override { images_.SetImageSizeBytes(kSize); }

  void ExpectWritten(int count)
  {
    EXPECT_EQ(images_.images.size(), static_cast<std::size_t>(count));
    for (auto& [index, image] : images_.images) {
      const auto frame = Frame(static_cast<int>(index));
      EXPECT_TRUE(std::equal(frame.begin(), frame.end(), image.bytes.begin()));
      EXPECT_EQ(image.locks, 1);
      EXPECT_EQ(image.unlocks, 1);
      EXPECT_EQ(image.opened, 1);
      EXPECT_EQ(image.closed, 1);
    }
  }

  TMemorySpooler images_;
};

} // namespace

TEST_F(ThreadedSpooler, ClosesImagesOnItsThreadsInTurn)
{
  {
    TThreadedSpooler spooler(&images_, 3);
    for (int index = 0; index < 7; ++index) EXPECT_EQ(spooler.Spool(index, Frame(index).data(), kSize), 1);
  }
  ExpectWritten(7);
  const auto closedBy = [&](unsigned int index) { return images_.images.at(index).closedBy; };
  const std::set<std::thread::id> threads{closedBy(0), closedBy(1), closedBy(2), std::this_thread::get_id()};
  EXPECT_EQ(threads.size(), 4u);
  for (unsigned int index = 3; index < 7; ++index) EXPECT_EQ(closedBy(index), closedBy(index % 3)) << index;
}

TEST_F(ThreadedSpooler, HasCopiedTheFrameOnReturnAndClosesEveryImageBeforeItGoes)
{
  std::atomic<bool> mayClose{false};
  images_.beforeClose = [&] { system_calls::Eventually([&] { return mayClose.load(); }); };
  {
    TThreadedSpooler spooler(&images_, 2);
    for (int index = 0; index < 2; ++index) EXPECT_EQ(spooler.Spool(index, Frame(index).data(), kSize), 1);
    EXPECT_EQ(images_.OpenImages(), 2);
    mayClose = true;
  }
  ExpectWritten(2);
}

TEST_F(ThreadedSpooler, AcceptsFramesWithoutASpoolerOrThatCannotBeClosed)
{
  EXPECT_EQ(TThreadedSpooler(nullptr, 1).Spool(0, Frame(0).data(), kSize), 1);
  images_.result = 1;
  {
    TThreadedSpooler spooler(&images_, 1);
    for (int index = 0; index < 3; ++index) EXPECT_EQ(spooler.Spool(index, Frame(index).data(), kSize), 1);
  }
  ExpectWritten(3);
}

namespace {

class ThreadedSpoolerFailure : public testing::TestWithParam<TWriteFailure>
{
};

} // namespace

TEST_P(ThreadedSpoolerFailure, IsTheCallersAndLeavesNothingOpen)
{
  TMemorySpooler images;
  images.SetImageSizeBytes(kSize);
  GetParam().prepare(images);
  auto frame = Frame(GetParam().data.index);
  TThreadedSpooler spooler(&images, 2);
  EXPECT_EQ(spooler.Spool(GetParam().data.index, GetParam().data.buffer, GetParam().data.sizeBytes), 0);
  EXPECT_EQ(images.OpenImages(), 0);
  EXPECT_EQ(spooler.Spool(1, frame.data(), kSize), 1) << "the next frame";
}

INSTANTIATE_TEST_SUITE_P(Table, ThreadedSpoolerFailure, testing::ValuesIn(WriteFailures()),
                         [](const auto& failure) { return std::string(failure.param.name); });
