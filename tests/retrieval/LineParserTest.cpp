// SPDX-License-Identifier: MIT
// The row walker: its steps, its end and its size check.
#include "retrieval/TLineParser.h"

#include <gtest/gtest.h>

TEST(LineParser, VisitsEachRowOnceAndEndsWithNull)
{
  unsigned char rows[12] = {};
  TLineParser lines(4, 3);
  EXPECT_TRUE(lines.noMoreLines());
  EXPECT_EQ(lines.GetFirstLine(rows, 12), rows);
  EXPECT_EQ(lines.GetNextLine(), rows + 4);
  EXPECT_EQ(lines.GetNextLine(), rows + 8);
  EXPECT_FALSE(lines.noMoreLines());
  EXPECT_EQ(lines.GetNextLine(), nullptr);
  EXPECT_TRUE(lines.noMoreLines());
  EXPECT_EQ(lines.GetNextLine(), nullptr);
}

TEST(LineParser, RefusesMemoryThatEndsBeforeTheLastRow)
{
  unsigned char rows[12] = {};
  TLineParser lines(4, 3);
  EXPECT_EQ(lines.GetFirstLine(rows, 11), nullptr);
  EXPECT_EQ(lines.GetNextLine(), nullptr);
  EXPECT_EQ(lines.GetFirstLine(nullptr, 12), nullptr);
  EXPECT_EQ(lines.GetFirstLine(rows, 13), rows);
}

TEST(LineParser, SizeOfRowsDoesNotWrapAt32Bits)
{
  const TLineParser lines(0x10000, 0x10000);
  EXPECT_FALSE(lines.validImageSizeBytes(0));
  EXPECT_FALSE(lines.validImageSizeBytes(0xFFFFFFFF));
}
