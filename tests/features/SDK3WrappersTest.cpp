// SPDX-License-Identifier: MIT
// The objects that stand for one feature each.
#include "features/SDK3Features.h"

#include "tests/support/TStagedVx.h"
#include "utility/TObserver.h"
#include "vxcore.h"

#include <gtest/gtest.h>

namespace {

class SDK3Wrappers : public ::testing::Test
{
protected:
  SDK3Wrappers() { vx_ = TStagedVx{}; }

  TStagedVx& vx_ = TStagedVx::Instance();
  SDK3Enum enum_{3, L"Any"};
  SDK3Int int_{3, L"Any"};
  SDK3Bool bool_{3, L"Any"};
};

TEST_F(SDK3Wrappers, AnyFlagButZeroMeansAvailable)
{
  bool available = false;
  vx_.flags["Any"] = 2;
  enum_.IsIndexAvailable(0, available);
  EXPECT_TRUE(available);
  vx_.flags["Any"] = 0;
  enum_.IsIndexAvailable(0, available);
  EXPECT_FALSE(available);
}

TEST_F(SDK3Wrappers, FailedReadGivesAnEmptyTextAndALongOneIsCut)
{
  std::wstring text = L"before";
  vx_.codes = {{"", VX_ERR_NOT_READABLE}};
  enum_.GetStringByIndex(0, text);
  EXPECT_TRUE(text.empty());

  vx_.codes.clear();
  vx_.fillsTexts = true;
  enum_.GetStringByIndex(0, text);
  EXPECT_EQ(text, std::wstring(99, L'x'));
}

TEST_F(SDK3Wrappers, IntegersAreNarrowedAndKeptOnFailure)
{
  int value = 9;
  vx_.integers["Any"] = 0x1'0000'0007LL;
  int_.GetInt(value);
  EXPECT_EQ(value, 7);
  vx_.codes = {{"", VX_ERR_NOT_READABLE}};
  value = 9;
  int_.GetInt(value);
  EXPECT_EQ(value, 9);
}

TEST_F(SDK3Wrappers, ObserversHearOfSuccessfulWritesOnly)
{
  class TCounter final : public TObserver
  {
  public:
    unsigned int DoUpdate() override { return ++updates; }
    unsigned int updates = 0;
  } counter;
  int_.RegisterObserver(&counter);
  int_.SetInt(5);
  vx_.codes = {{"", VX_ERR_NOT_WRITABLE}};
  int_.SetInt(6);
  EXPECT_EQ(counter.updates, 1u);
}

} // namespace
