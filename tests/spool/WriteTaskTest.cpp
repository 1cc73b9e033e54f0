// SPDX-License-Identifier: MIT
// Queued frames written by a task on its own thread.
#include "spool/TCreateAndWriteFileTask.h"
#include "tests/spool/TMemorySpooler.h"
#include "tests/utility/SystemCalls.h"
#include "utility/IDispatchRoutine.h"
#include "utility/TQuorinTaskLauncher.h"

#include <array>
#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <set>

using QuorinUtility::TQuorinTaskLauncher;
using system_calls::Eventually;

namespace {

class TCountingRoutine final : public IDispatchRoutine
{
public:
  void Signal() override { ++signals; }
  std::atomic<int> signals{0};
};

class WriteTask : public testing::Test
{
protected:
  static constexpr int kFrames = 200;

  WriteTask()
  {
    images_.SetImageSizeBytes(1);
    for (int i = 0; i < kFrames; ++i) frames_[static_cast<std::size_t>(i)] = static_cast<unsigned char>(i);
  }

  void Queue(int index) { input_.Queue(Frame(index)); }
  TSpoolFileData Frame(int index) { return {&frames_[static_cast<std::size_t>(index)], index, 1}; }
  TQuorinTaskLauncher** Launchers() { return (borrowed_ = {launchers_[0].get(), launchers_[1].get()}).data(); }

  void ExpectWritten(unsigned int index)
  {
    const TMemoryImage& image = images_.images.at(index);
    EXPECT_EQ(image.bytes.at(0), frames_[index]);
    EXPECT_EQ(image.unlocks, 1);
    EXPECT_EQ(image.closed, 1);
  }

  TMemorySpooler images_; // outlives the launchers' tasks
  std::array<std::unique_ptr<TQuorinTaskLauncher>, 2> launchers_{std::make_unique<TQuorinTaskLauncher>(),
                                                                 std::make_unique<TQuorinTaskLauncher>()};
  std::array<TQuorinTaskLauncher*, 2> borrowed_{};
  TSpoolQueue input_;
  TSpoolQueue reuse_;
  TCountingRoutine routine_;
  std::array<unsigned char, kFrames> frames_{};
};

} // namespace

// Also behind one that fails, which is marked and counted.
TEST_F(WriteTask, WritesFramesInOrderAndPassesThemOnUpToTheEndMarker)
{
  constexpr int kFailing = 5;
  images_.openResult = [](unsigned int index) { return index == kFailing ? 28 : 0; };
  const TCreateAndWriteFileTask task(Launchers(), &images_, 2, &input_, &reuse_, &routine_);
  EXPECT_EQ(task.GetLastSavedImageIndex(), 0);
  for (int index = 0; index < kFrames; ++index) Queue(index);
  for (int index = 0; index < kFrames; ++index) {
    const TSpoolFileData data = reuse_.Retrieve();
    EXPECT_EQ(data, Frame(index));
    EXPECT_EQ(data.error, index == kFailing ? 1 : 0);
  }
  EXPECT_EQ(task.GetLastSavedImageIndex(), kFrames);
  EXPECT_EQ(routine_.signals, kFrames);
  input_.Queue(TSpoolFileData());
  Queue(0);
  launchers_ = {}; // waits for what they were given
  EXPECT_TRUE(reuse_.IsEmpty());
  std::set<std::thread::id> closers;
  for (unsigned int index = 0; index < kFrames; ++index) {
    if (index == kFailing) continue;
    ExpectWritten(index);
    closers.insert(images_.images.at(index).closedBy);
  }
  EXPECT_EQ(closers.size(), 2u);
}

TEST_F(WriteTask, WritesNothingWhenAbortedBeforeTheFirstFrame)
{
  input_.Abort();
  std::make_unique<TCreateAndWriteFileTask>(Launchers(), &images_, 2, &input_, &reuse_, &routine_).reset();
  EXPECT_TRUE(images_.modes.empty());
  EXPECT_TRUE(reuse_.IsEmpty());
}

TEST_F(WriteTask, ImagesAreClosedEvenWhenTheTaskIsGone)
{
  std::atomic<bool> mayClose{false};
  images_.beforeClose = [&] { Eventually([&] { return mayClose.load(); }); };
  auto task = std::make_unique<TCreateAndWriteFileTask>(Launchers(), &images_, 2, &input_, &reuse_, nullptr);
  for (const int index : {0, 1}) Queue(index);
  for (const int index : {0, 1}) EXPECT_EQ(reuse_.Retrieve().index, index);
  task.reset();
  EXPECT_EQ(images_.OpenImages(), 2);
  mayClose = true;
  launchers_ = {};
  for (const unsigned int index : {0u, 1u}) ExpectWritten(index);
}
