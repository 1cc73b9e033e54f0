// SPDX-License-Identifier: MIT
// Queued frames written by a task of their own.
#include "spool/TCreateAndWriteFileTask.h"
#include "spool/TSpoolQueue.h"
#include "tests/spool/logged_by.h"
#include "tests/spool/TMemorySpooler.h"
#include "tests/spool/WriteFailures.h"
#include "tests/utility/SystemCalls.h"
#include "utility/IDispatchRoutine.h"
#include "utility/TQuorinTaskLauncher.h"

#include <cerrno>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <set>

using QuorinUtility::TQuorinTaskLauncher;
using system_calls::Eventually;
using testing::HasSubstr;

namespace {

constexpr int kSize = 64;

class TCountingRoutine final : public IDispatchRoutine
{
public:
  void Signal() override { ++signals; }
  std::atomic<int> signals{0};
};

class WriteTask : public testing::Test
{
protected:
  void SetUp() override
  {
    images_.SetImageSizeBytes(kSize);
    for (int i = 0; i < 200; ++i) frames_.emplace_back(kSize, static_cast<unsigned char>(i + 1));
  }

  void MakeLaunchers(int count)
  {
    for (int i = 0; i < count; ++i) {
      launchers_.push_back(std::make_unique<TQuorinTaskLauncher>());
      borrowed_.push_back(launchers_.back().get());
    }
  }

  std::unique_ptr<TCreateAndWriteFileTask> MakeTask()
  {
    return std::make_unique<TCreateAndWriteFileTask>(
        borrowed_.data(), &images_, static_cast<int>(borrowed_.size()), &input_, &reuse_, &routine_, false);
  }

  void Queue(int index)
  {
    input_.Queue(TSpoolFileData(frames_[static_cast<std::size_t>(index)].data(), index, kSize));
  }

  void ExpectWritten(unsigned int index)
  {
    const TMemoryImage& image = images_.images.at(index);
    EXPECT_EQ(image.bytes, frames_[index]);
    EXPECT_EQ(image.unlocks, 1);
    EXPECT_EQ(image.closed, 1);
  }

  TMemorySpooler images_; // outlives the launchers' tasks
  std::vector<std::unique_ptr<TQuorinTaskLauncher>> launchers_;
  std::vector<TQuorinTaskLauncher*> borrowed_;
  TSpoolQueue input_;
  TSpoolQueue reuse_;
  TCountingRoutine routine_;
  std::vector<std::vector<unsigned char>> frames_;
};

} // namespace

TEST_F(WriteTask, WritesFramesInOrderAndHandsThemBack)
{
  MakeLaunchers(3);
  const auto task = MakeTask();
  EXPECT_EQ(task->GetLastSavedImageIndex(), 0);
  for (int index = 0; index < 200; ++index) Queue(index);
  for (int index = 0; index < 200; ++index) {
    const TSpoolFileData data = reuse_.Retrieve();
    EXPECT_EQ(data, TSpoolFileData(frames_[static_cast<std::size_t>(index)].data(), index, kSize));
    EXPECT_EQ(data.error, 0);
  }
  EXPECT_EQ(task->GetLastSavedImageIndex(), 200);
  EXPECT_EQ(routine_.signals, 200);
  launchers_.clear(); // waits for what they were given
  std::set<std::thread::id> closers;
  for (unsigned int index = 0; index < 200; ++index) {
    ExpectWritten(index);
    EXPECT_EQ(images_.images.at(index).closedBy, images_.images.at(index % 3).closedBy);
    closers.insert(images_.images.at(index).closedBy);
  }
  EXPECT_EQ(closers.size(), 3u);
}

TEST_F(WriteTask, EndsAtAnEndMarkerBehindTheLastFrame)
{
  MakeLaunchers(1);
  const auto task = MakeTask();
  Queue(0);
  Queue(1);
  input_.Queue(TSpoolFileData());
  EXPECT_EQ(reuse_.Retrieve().index, 0);
  EXPECT_EQ(reuse_.Retrieve().index, 1);
  Queue(2);
  EXPECT_FALSE(input_.IsAborted());
  EXPECT_TRUE(reuse_.IsEmpty());
}

TEST_F(WriteTask, WritesNothingWhenAbortedBeforeTheFirstFrame)
{
  input_.Abort();
  MakeTask().reset();
  EXPECT_TRUE(images_.modes.empty());
  EXPECT_EQ(routine_.signals, 0);
  EXPECT_TRUE(reuse_.IsEmpty());
}

TEST_F(WriteTask, SaysWhenAnAbortLeavesFramesBehind)
{
  std::atomic<bool> mayClose{false};
  images_.beforeClose = [&] { Eventually([&] { return mayClose.load(); }); };
  auto task = MakeTask();
  Queue(0);
  Queue(1);
  EXPECT_TRUE(Eventually([&] { return images_.OpenImages() == 1; }));
  input_.Abort();
  mayClose = true;
  EXPECT_THAT(LoggedBy([&] { task.reset(); }), HasSubstr("images behind number 1 were queued"));
  EXPECT_EQ(images_.images.size(), 1u);
  ExpectWritten(0);
}

TEST_F(WriteTask, ImagesAreClosedEvenWhenTheTaskIsGone)
{
  MakeLaunchers(2);
  std::atomic<bool> mayClose{false};
  images_.beforeClose = [&] { Eventually([&] { return mayClose.load(); }); };
  auto task = MakeTask();
  Queue(0);
  Queue(1);
  reuse_.Retrieve();
  reuse_.Retrieve();
  task.reset();
  EXPECT_EQ(images_.OpenImages(), 2);
  mayClose = true;
  launchers_.clear();
  ExpectWritten(0);
  ExpectWritten(1);
}

namespace {

class WriteTaskFailure : public WriteTask, public testing::WithParamInterface<TWriteFailure>
{
};

} // namespace

TEST_P(WriteTaskFailure, IsMarkedAndCountedAndTheNextFrameIsWritten)
{
  GetParam().prepare(images_);
  MakeLaunchers(1);
  const auto task = MakeTask();
  input_.Queue(GetParam().data);
  const TSpoolFileData failed = reuse_.Retrieve();
  EXPECT_EQ(failed, GetParam().data);
  EXPECT_EQ(failed.error, 1);
  EXPECT_EQ(task->GetLastSavedImageIndex(), GetParam().data.index + 1);
  EXPECT_EQ(routine_.signals, 1);
  EXPECT_EQ(images_.OpenImages(), 0);
  Queue(1);
  EXPECT_EQ(reuse_.Retrieve().error, 0);
  launchers_.clear();
  ExpectWritten(1);
}

INSTANTIATE_TEST_SUITE_P(Table, WriteTaskFailure, testing::ValuesIn(WriteFailures()),
                         [](const auto& failure) { return std::string(failure.param.name); });
