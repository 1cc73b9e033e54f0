// SPDX-License-Identifier: MIT
// The books of a run, and the frames that timestamps reveal as lost.
#include "tools/RunReport.h"
#include "tools/TRunAccount.h"

#include <gtest/gtest.h>

namespace vxtool {
namespace {

TEST(TickGapCounter, CountsFramesMissingBetweenJitteryTimestamps)
{
  TTickGapCounter gaps;
  long long ticks = 0;
  for (int frame = 0; frame < 1000; ++frame) {
    ticks += 10'000 + frame % 3 * 400; // up to 8 % late
    if (frame % 100 == 50 || frame % 100 == 51 || frame == 77) continue;
    gaps.Add(ticks);
  }
  EXPECT_EQ(gaps.Missing(), 21);
}

TEST(TickGapCounter, FindsLossInShortRunsAndNoneWhereNothingCanBeTold)
{
  TTickGapCounter three;
  for (const long long ticks : {0, 1000, 3000}) three.Add(ticks);
  EXPECT_EQ(three.Missing(), 1);
  TTickGapCounter two;
  for (const long long ticks : {0, 5000}) two.Add(ticks);
  EXPECT_EQ(two.Missing(), 0);
  TTickGapCounter restarted;
  for (const long long ticks : {900'000, 901'000, 0, 1000, 2000}) restarted.Add(ticks);
  EXPECT_EQ(restarted.Missing(), 0);
}

TEST(RunAccount, CountsAddUpThroughEveryKindOfLoss)
{
  TRunAccount account(true);
  long long ticks = 0;
  for (int image = 1; image <= 10; ++image) {
    ticks += image == 5 ? 3000 : 1000; // two frames never came
    account.Timestamp(ticks);
    if (image == 3)
      account.EnterOverwritten(1);
    else
      account.EnterFetched(image != 8);
  }
  account.Timestamp(ticks + 1000);
  account.TakeBackWritten(1);
  account.Finish(11);
  const TRunTotals& totals = account.Totals();
  EXPECT_TRUE(account.AddsUp());
  EXPECT_EQ(totals.lostInCamera, 2);
  EXPECT_EQ(totals.Produced(), 13);
  EXPECT_EQ(totals.notFetched, 1);
  EXPECT_EQ(totals.written, 7);
  EXPECT_EQ(totals.notWritten, 2);
  EXPECT_EQ(totals.Lost(), 3);

  account.Finish(5); // fewer delivered than fetched cannot be
  EXPECT_FALSE(account.AddsUp());
}

TEST(RunAccount, ImageWithoutTimestampIsNotTakenForLost)
{
  TRunAccount account(true);
  for (int image = 1; image <= 10; ++image) {
    if (image != 6) account.Timestamp(image * 1000);
    account.EnterFetched(true);
  }
  account.Finish(10);
  EXPECT_EQ(account.Totals().withoutTimestamp, 1);
  EXPECT_EQ(account.Totals().lostInCamera, 0);
}

TEST(RunAccount, SaysUnknownWhenNoPaceOrNoTimestampsTell)
{
  TRunAccount triggered(false);
  TRunAccount blind(true);
  for (const long long ticks : {0, 1000, 7000}) {
    triggered.Timestamp(ticks);
    triggered.EnterFetched(true);
    blind.EnterFetched(true);
  }
  triggered.Finish(3);
  blind.Finish(3);
  EXPECT_FALSE(triggered.Totals().lostInCamera);
  EXPECT_FALSE(blind.Totals().lostInCamera);

  TRunSummary summary;
  summary.outcome = "complete";
  summary.output = "a \"b\".tif";
  summary.totals = triggered.Totals();
  EXPECT_NE(RunReportText(summary).find("unknown"), std::string::npos);
  EXPECT_NE(RunReportJson(summary).find("\"lost_in_camera\":null"), std::string::npos);
  EXPECT_NE(RunReportJson(summary).find("\"output\":\"a \\\"b\\\".tif\""), std::string::npos);
}

} // namespace
} // namespace vxtool
