// SPDX-License-Identifier: MIT
// Blocks of registers, step by step.
#include "features/TRegisterAccess.h"

#include "tests/support/TStagedVx.h"
#include "vxcore.h"

#include <gtest/gtest.h>

namespace {

using TCalls = std::vector<std::string>;

class RegisterAccess : public ::testing::Test
{
protected:
  RegisterAccess()
  {
    vx_ = TStagedVx{};
    vx_.registers = {{100, 0x1'8000'0001}, {101, -1}, {102, 3}};
  }

  TStagedVx& vx_ = TStagedVx::Instance();
  TRegisterAccess access_{7};
  unsigned int values_[3] = {7, 8, 9};
};

TEST_F(RegisterAccess, ReadLoadsTheBlockFirstAndWriteStoresItLast)
{
  EXPECT_EQ(access_.Read(100, 2, values_), 0);
  EXPECT_EQ(vx_.calls[2], "Command RegisterRead");
  EXPECT_EQ(values_[0], 0x80000001u) << "the low 32 bits";
  EXPECT_EQ(values_[1], 0xFFFFFFFFu);
  EXPECT_EQ(values_[2], 9u);
  vx_.calls.clear();
  EXPECT_EQ(access_.Write(100, 2, values_), 0);
  EXPECT_EQ(vx_.calls, (TCalls{"SetInt RegisterAddress 100", "SetInt RegisterCount 2", "SetInt RegisterIndex 0",
                               "SetInt RegisterValue 2147483649", "SetInt RegisterIndex 1",
                               "SetInt RegisterValue 4294967295", "Command RegisterWrite"}));
  vx_.calls.clear();
  EXPECT_EQ(access_.Write(100, 0, nullptr), 0);
  EXPECT_EQ(access_.Read(100, 0, nullptr), 0);
  EXPECT_EQ(vx_.calls.size(), 6u) << "address, count and command also without values";
}

TEST_F(RegisterAccess, EveryFailedStepEndsTheTransfer)
{
  for (const char* const step :
       {"SetInt RegisterAddress", "SetInt RegisterCount", "SetInt RegisterIndex 1", "Command"}) {
    vx_.codes = {{step, VX_ERR_COMMUNICATION}};
    EXPECT_EQ(access_.Read(100, 3, values_), 1) << step;
    EXPECT_EQ(vx_.calls.back().rfind(step, 0), 0u) << step;
    EXPECT_EQ(access_.Write(100, 3, values_), 1) << step;
    EXPECT_EQ(vx_.calls.back().rfind(step, 0), 0u) << step;
  }
  vx_.codes = {{"SetInt RegisterValue", VX_ERR_COMMUNICATION}, {"GetInt RegisterValue", VX_ERR_COMMUNICATION}};
  values_[1] = 8;
  EXPECT_EQ(access_.Write(100, 3, values_), 1);
  EXPECT_EQ(access_.Read(100, 3, values_), 1);
  EXPECT_EQ(values_[0], 0u) << "overwritten all the same";
  EXPECT_EQ(values_[1], 8u);

  vx_ = TStagedVx{};
  EXPECT_EQ(access_.Read(100, 1, nullptr), 1);
  EXPECT_EQ(access_.Write(100, 1, nullptr), 1);
  EXPECT_EQ(TRegisterAccess(-1).Read(100, 1, values_), 1);
  EXPECT_EQ(TRegisterAccess(-1).Write(100, 1, values_), 1);
  EXPECT_TRUE(vx_.calls.empty());
}

} // namespace
