// SPDX-License-Identifier: MIT
// Questions about features, and writes that look first.
#include "features/feature_access.h"

#include "tests/support/TStagedVx.h"
#include "vxcore.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

class FeatureAccess : public ::testing::Test
{
protected:
  FeatureAccess() { vx_ = TStagedVx{}; }

  long Calls(const char* function) const
  {
    return std::ranges::count_if(vx_.calls, [=](const std::string& call) { return call.starts_with(function); });
  }

  TStagedVx& vx_ = TStagedVx::Instance();
};

TEST_F(FeatureAccess, OnlyASuccessfulAnswerOfOneMeansImplemented)
{
  for (const int flag : {-1, 0, 1, 2}) {
    vx_.flags["Any"] = flag;
    vx_.codes.clear();
    EXPECT_EQ(isImplemented(7, L"Any"), flag == 1) << flag;
    vx_.codes = {{"", VX_ERR_COMMUNICATION}};
    EXPECT_FALSE(isImplemented(7, L"Any"));
  }
}

TEST_F(FeatureAccess, SearchEndsAtTheFirstTextThatCannotBeRead)
{
  vx_.texts = {L"Internal", L"External", L"Software"};
  vx_.codes = {{"GetEnumeratedString Any 1", VX_ERR_NOT_READABLE}};
  EXPECT_EQ(GetEnumeratedIndexFromString(L"Any", L"Internal"), 0);
  EXPECT_EQ(GetEnumeratedIndexFromString(L"Any", L"Software"), -1);
  EXPECT_EQ(Calls("GetEnumeratedString"), 3);

  vx_ = TStagedVx{};
  for (const int count : {0, -7}) {
    vx_.count = count;
    EXPECT_EQ(GetEnumeratedIndexFromString(L"Any", L"Internal"), -1);
  }
  EXPECT_EQ(Calls("GetEnumeratedString"), 0);
}

TEST_F(FeatureAccess, TextsWithoutAnEndAreCutAndDoNotMatch)
{
  vx_.texts = {L"x"};
  vx_.fillsTexts = true;
  EXPECT_EQ(GetEnumeratedIndexFromString(L"Any", std::wstring(64, L'x').c_str()), -1);
  EXPECT_EQ(GetEnumeratedIndexFromString(L"Any", std::wstring(63, L'x').c_str()), 0);
}

} // namespace
