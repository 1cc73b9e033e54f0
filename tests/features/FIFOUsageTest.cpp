// SPDX-License-Identifier: MIT
// The fill of the camera's memory, from its registers.
#include "features/TgetFIFOUsage.h"
#include "tests/support/TFakeEnum.h"
#include "tests/support/TStagedVx.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

class FIFOUsage : public ::testing::Test
{
protected:
  FIFOUsage()
  {
    vx_ = TStagedVx{};
    vx_.strings["DDR2Type"] = "1GB";
  }

  int Percent(long long first, long long second)
  {
    vx_.registers = {{0xFB00, first}, {0xFB04, second}};
    int percent = -1;
    EXPECT_EQ(usage_.GetInt(percent), VX_SUCCESS);
    return percent;
  }

  TStagedVx& vx_ = TStagedVx::Instance();
  TFakeEnum gain_{{}, L"Gain 1 (11-bit)"};
  TFakeEnum shuttering_{{}, L"Rolling"};
  TgetFIFOUsage usage_{7, &gain_, &shuttering_};
};

TEST_F(FIFOUsage, IsCutToWholePerCent)
{
  EXPECT_EQ(Percent(1000000, 289282), 0);
  EXPECT_EQ(Percent(1000000, 289283), 1);
  EXPECT_EQ(Percent(0xFFFFFFFF, 0xFFFFFFFF), 6662) << "no 32-bit sum";
}

TEST_F(FIFOUsage, CapacityDependsOnMemoryShutterAndGain)
{
  EXPECT_EQ(Percent(64464128, 64464128), 100);
  shuttering_.present = L"Global";
  EXPECT_EQ(Percent(64464128, 0), 100);
  gain_.present = L"Gain 1+2 (16-bit)";
  EXPECT_EQ(Percent(43674624, 0), 100);

  TgetFIFOUsage large(7, &gain_, &shuttering_);
  vx_.strings["DDR2Type"] = "4GB";
  int percent = 0;
  EXPECT_EQ(large.GetInt(percent), VX_SUCCESS);
  EXPECT_EQ(percent, 25);
}

TEST_F(FIFOUsage, WhatCannotBeReadLeavesTheValue)
{
  for (const char* const step :
       {"SetInt RegisterAddress 64256", "SetInt RegisterAddress 64260", "GetInt Register"}) {
    vx_.codes = {{step, VX_ERR_COMMUNICATION}};
    EXPECT_EQ(Percent(5000000, 0), -1) << step;
  }
  vx_.codes.clear();
  gain_.readCode = VX_ERR_NOT_IMPLEMENTED;
  EXPECT_EQ(Percent(5000000, 0), -1);
  gain_.readCode = VX_SUCCESS;
  shuttering_.readCode = VX_ERR_NOT_READABLE;
  EXPECT_EQ(Percent(5000000, 0), -1);
}

TEST_F(FIFOUsage, UnknownMemoryIsAFailureAndItsLengthIsNotTrusted)
{
  int percent = -1;
  for (const char* const step : {"GetStringMaxLength", "GetString DDR2Type"}) {
    vx_.codes = {{step, 53}};
    EXPECT_EQ(usage_.GetInt(percent), 53) << step;
  }
  EXPECT_EQ(percent, -1);
  vx_.codes.clear();
  for (const int length : {INT_MIN, -1, 0, INT_MAX}) {
    vx_.maxLength = length;
    EXPECT_EQ(usage_.GetInt(percent), VX_SUCCESS) << length;
  }
  EXPECT_EQ(usage_.SetInt(50), VX_ERR_NOT_WRITABLE);
}

} // namespace
