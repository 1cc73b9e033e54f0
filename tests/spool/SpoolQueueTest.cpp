// SPDX-License-Identifier: MIT
// The queue of frames: order, waiting, several readers, and aborts at any moment.
#include "spool/TSpoolQueue.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace {

unsigned char frame[4];

} // namespace

TEST(SpoolQueue, GivesFramesBackInOrder)
{
  TSpoolQueue queue;
  TQueuingSpoolAlgorithm algorithm(&queue);
  EXPECT_TRUE(queue.IsEmpty());
  EXPECT_EQ(algorithm.Spool(0, frame, 4), 1);
  EXPECT_EQ(algorithm.Spool(1, frame + 1, 3), 1);
  EXPECT_FALSE(queue.IsEmpty());
  EXPECT_EQ(queue.Retrieve(), TSpoolFileData(frame, 0, 4));
  EXPECT_EQ(queue.Retrieve(), TSpoolFileData(frame + 1, 1, 3));
  EXPECT_TRUE(queue.IsEmpty());
  EXPECT_EQ(TQueuingSpoolAlgorithm(nullptr).Spool(0, frame, 4), 0);
}

TEST(SpoolQueue, IsAbortedForGoodWithAnyElements)
{
  TSpoolQueue queue;
  queue.Queue(TSpoolFileData(frame, 1, 4));
  EXPECT_FALSE(queue.IsAborted());
  queue.Abort();
  queue.Abort();
  EXPECT_TRUE(queue.IsAborted());
  EXPECT_EQ(queue.Retrieve(), TSpoolFileData());
  queue.Queue(TSpoolFileData(frame, 2, 4));
  EXPECT_EQ(queue.Retrieve(), TSpoolFileData());
  EXPECT_FALSE(queue.IsEmpty());
}

TEST(SpoolQueue, AnAbortWhileTheLastFrameIsTakenIsNotMissed)
{
  for (int round = 0; round < 3000; ++round) {
    TSpoolQueue queue;
    std::atomic<bool> started{false};
    std::thread reader([&] {
      started = true;
      while (!(queue.Retrieve() == TSpoolFileData())) {
      }
    });
    while (!started) std::this_thread::yield();
    queue.Queue(TSpoolFileData(frame, 1, 4));
    queue.Abort();
    reader.join();
  }
}
