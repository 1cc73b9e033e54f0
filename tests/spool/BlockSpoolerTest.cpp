// SPDX-License-Identifier: MIT
// Blocks of images whose place cannot be had.
#include "spool/TBlockSpooler.h"

#include "tests/spool/TMemorySpooler.h"

#include <gtest/gtest.h>
#include <new>

TEST(BlockSpooler, TakesWhatItsSpoolerThrowsForAFailureAndLeavesNothingOpen)
{
  unsigned char frame[64] = {};
  const auto noMemory = []() -> int { throw std::bad_alloc(); };
  TMemorySpooler places;
  places.SetImageSizeBytes(sizeof frame);
  {
    TBlockSpooler spooler(&places, sizeof frame, 4, 1);
    places.openResult = [&](unsigned int) { return noMemory(); };
    EXPECT_EQ(spooler.Spool(0, frame, sizeof frame), 0);
    places.openResult = [](unsigned int) { return 0; };
    places.images[0].lockResult = noMemory;
    EXPECT_EQ(spooler.Spool(0, frame, sizeof frame), 0);
    EXPECT_EQ(places.images[0].opened, 1);
  }
  EXPECT_EQ(places.OpenImages(), 0);
}
