// SPDX-License-Identifier: MIT
// Questions about features, and writes that look first.
#include "features/feature_access.h"

#include "TScriptedVx.h"
#include "vxcore.h"
#include "vxmcd_result_codes.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

class FeatureAccess : public ::testing::Test
{
protected:
  FeatureAccess() { vx_ = TScriptedVx{}; }

  long Calls(const char* function) const { return std::count(vx_.calls.begin(), vx_.calls.end(), function); }

  TScriptedVx& vx_ = TScriptedVx::Instance();
};

TEST_F(FeatureAccess, OnlyASuccessfulAnswerOfOneMeansImplemented)
{
  for (const int flag : {-1, 0, 1, 2}) {
    vx_.flag = flag;
    vx_.code = VX_SUCCESS;
    EXPECT_EQ(isImplemented(7, L"Any"), flag == 1) << flag;
    vx_.code = VX_ERR_COMMUNICATION;
    EXPECT_FALSE(isImplemented(7, L"Any"));
  }
}

TEST_F(FeatureAccess, FindsATextExactly)
{
  vx_.texts = {L"Internal", L"External", L"Software"};
  EXPECT_EQ(GetEnumeratedIndexFromString(L"Any", L"Software"), 2);
  EXPECT_EQ(GetEnumeratedIndexFromString(L"Any", L"software"), -1);
  EXPECT_EQ(GetEnumeratedIndexFromString(L"Any", L"Soft"), -1);
}

TEST_F(FeatureAccess, SearchEndsAtTheFirstTextThatCannotBeRead)
{
  vx_.texts = {L"Internal", L"External", L"Software"};
  vx_.failsFromIndex = 1;
  EXPECT_EQ(GetEnumeratedIndexFromString(L"Any", L"Internal"), 0);
  EXPECT_EQ(GetEnumeratedIndexFromString(L"Any", L"Software"), -1);
  EXPECT_EQ(Calls("VX_GetEnumeratedString"), 3);

  vx_ = TScriptedVx{};
  for (const int count : {0, -7}) {
    vx_.count = count;
    EXPECT_EQ(GetEnumeratedIndexFromString(L"Any", L"Internal"), -1);
  }
  EXPECT_EQ(Calls("VX_GetEnumeratedString"), 0);
}

TEST_F(FeatureAccess, TextsWithoutAnEndAreCutAndDoNotMatch)
{
  vx_.texts = {L"x"};
  vx_.unterminated = true;
  EXPECT_EQ(GetEnumeratedIndexFromString(L"Any", std::wstring(64, L'x').c_str()), -1);
  EXPECT_EQ(GetEnumeratedIndexFromString(L"Any", std::wstring(63, L'x').c_str()), 0);
}

TEST_F(FeatureAccess, GuardedWriteNeedsTheTextToBeThereAndAvailable)
{
  vx_.texts = {L"Internal"};
  vx_.flag = 1;
  EXPECT_EQ(CheckSetEnumeratedIndex(L"Any", L"External", RC_INVALID_TRIGGER_MODE), RC_INVALID_TRIGGER_MODE);
  for (const int flag : {0, 2}) {
    vx_.flag = flag;
    EXPECT_EQ(CheckSetEnumeratedIndex(L"Any", L"Internal", RC_INVALID_TRIGGER_MODE), RC_INVALID_TRIGGER_MODE);
  }
  EXPECT_EQ(Calls("VX_SetEnumeratedString"), 0);

  vx_.flag = 1;
  EXPECT_EQ(CheckSetEnumeratedIndex(L"Any", L"Internal", RC_INVALID_TRIGGER_MODE), RC_SUCCESS)
      << "although the write itself is refused";
  EXPECT_EQ(Calls("VX_SetEnumeratedString"), 1);
}

} // namespace
