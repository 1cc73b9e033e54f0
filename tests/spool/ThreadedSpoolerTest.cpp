// SPDX-License-Identifier: MIT
// Frames copied on the caller's thread, images closed on others.
#include "spool/TThreadedSpooler.h"

#include "spool/image_writing.h"
#include "tests/spool/TMemorySpooler.h"
#include "tests/utility/SystemCalls.h"
#include "utility/TQuorinTaskLauncher.h"

#include <array>
#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <stdexcept>
#include <vector>

namespace {

class ThreadedSpooler : public testing::Test
{
protected:
  ThreadedSpooler() { images_.SetImageSizeBytes(1); }

  static int Spool(TThreadedSpooler& spooler, int index)
  {
    auto frame = static_cast<unsigned char>(index + 1);
    return spooler.Spool(index, &frame, 1);
  }

  void ExpectWritten(int count)
  {
    EXPECT_EQ(images_.images.size(), static_cast<std::size_t>(count));
    for (auto& [index, image] : images_.images) {
      EXPECT_EQ(image.bytes.at(0), index + 1);
      EXPECT_EQ(image.locks, 1);
      EXPECT_EQ(image.unlocks, 1);
      EXPECT_EQ(image.opened, 1);
      EXPECT_EQ(image.closed, 1);
    }
  }

  TMemorySpooler images_;
};

} // namespace

TEST(SpoolThreads, AreBounded)
{
  EXPECT_EQ(MakeLaunchers(1000).size(), 256u);
}

// Also images that cannot be closed.
TEST_F(ThreadedSpooler, ClosesImagesOnItsThreadsInTurn)
{
  images_.result = 1;
  {
    TThreadedSpooler spooler(&images_, 3);
    for (int index = 0; index < 7; ++index) EXPECT_EQ(Spool(spooler, index), 1);
  }
  ExpectWritten(7);
  const auto closedBy = [&](unsigned int index) { return images_.images.at(index).closedBy; };
  const std::set<std::thread::id> threads{closedBy(0), closedBy(1), closedBy(2), std::this_thread::get_id()};
  EXPECT_EQ(threads.size(), 4u);
  for (unsigned int index = 3; index < 7; ++index) EXPECT_EQ(closedBy(index), closedBy(index % 3)) << index;
}

TEST_F(ThreadedSpooler, HasCopiedTheFrameOnReturnAndClosesEveryImageBeforeItIsGone)
{
  std::atomic<bool> mayClose{false};
  images_.beforeClose = [&] { system_calls::Eventually([&] { return mayClose.load(); }); };
  {
    TThreadedSpooler spooler(&images_, 2);
    for (int index = 0; index < 2; ++index) EXPECT_EQ(Spool(spooler, index), 1);
    EXPECT_EQ(images_.OpenImages(), 2);
    mayClose = true;
  }
  ExpectWritten(2);
}

TEST_F(ThreadedSpooler, PutsFramesIntoOneImageUntilItIsFull)
{
  {
    TThreadedSpooler spooler(&images_, 1, 3);
    for (int index = 0; index < 4; ++index) EXPECT_EQ(Spool(spooler, index), 1);
  }
  EXPECT_EQ(images_.images.size(), 2u);
  EXPECT_EQ(images_.images.at(0).locks, 3);
  EXPECT_EQ(images_.images.at(0).unlocks, 3);
  EXPECT_EQ(images_.images.at(1).locks, 1);
  EXPECT_EQ(images_.images.at(1).closed, 1);
}

TEST_F(ThreadedSpooler, ReportsAFrameThatCannotBeWrittenAndLeavesNothingOpen)
{
  TThreadedSpooler nowhere(nullptr, 1);
  EXPECT_EQ(Spool(nowhere, 0), 1) << "without a spooler frames are dropped";
  const auto throws = []() -> int { throw std::runtime_error("of no use"); };
  for (const int framesPerImage : {1, 4}) {
    TThreadedSpooler spooler(&images_, 2, framesPerImage);
    for (const std::function<int()>& answer : {std::function<int()>([] { return 28; }), {throws}}) {
      images_.openResult = [&](unsigned int) { return answer(); };
      EXPECT_EQ(Spool(spooler, 0), 0);
      images_.openResult = [](unsigned int) { return 0; };
      images_.images[0].lockResult = answer;
      EXPECT_EQ(Spool(spooler, 0), 0);
      images_.images[0].lockResult = [] { return 0; };
    }
    unsigned char frame = 0;
    EXPECT_EQ(spooler.Spool(-1, &frame, 1), 0);
    EXPECT_EQ(spooler.Spool(0, &frame, -1), 0);
    EXPECT_EQ(spooler.Spool(0, nullptr, 1), 0);
    EXPECT_EQ(images_.OpenImages(), 0);
    EXPECT_EQ(Spool(spooler, 1), 1) << "the next frame";
  }
}
