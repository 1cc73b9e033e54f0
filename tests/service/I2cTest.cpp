// SPDX-License-Identifier: MIT
// I2C transfers, step by step.
#include "service/TSDK3i2c.h"
#include "tests/support/TStagedVx.h"
#include "vxcore.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

class I2c : public ::testing::Test
{
protected:
  I2c()
  {
    vx_ = TStagedVx{};
    vx_.bytes = {10, 11, 12, 13, 14, 15, 16, 17};
  }

  bool WasCalled(const std::string& call) const
  {
    return std::find(vx_.calls.begin(), vx_.calls.end(), call) != vx_.calls.end();
  }

  TStagedVx& vx_ = TStagedVx::Instance();
  TSDK3i2c bus_{7, L"Internal"};
  unsigned char data_[8] = {1, 2, 3, 4, 5, 6, 7, 8};
};

TEST_F(I2c, ReadGoesOnBehindAByteThatFails)
{
  for (const char* const failing : {"SetInt InternalI2CByteSelector 3", "GetInt InternalI2CByte 3"}) {
    vx_.codes = {{failing, VX_ERR_COMMUNICATION}};
    data_[3] = 99;
    EXPECT_EQ(bus_.Read(0x20, data_, 8), 2);
    EXPECT_EQ(std::vector<unsigned char>(data_, data_ + 8),
              (std::vector<unsigned char>{10, 11, 12, 99, 14, 15, 16, 17}));
  }
}

TEST_F(I2c, WriteThatCannotBeStagedIsNeverSent)
{
  for (const char* const failing : {"SetInt InternalI2CByteSelector 2", "SetInt InternalI2CByte 3"}) {
    vx_.codes = {{failing, VX_ERR_OUT_OF_RANGE}};
    vx_.calls.clear();
    EXPECT_EQ(bus_.Write(0x20, data_, 8), 2);
    EXPECT_FALSE(WasCalled("Command InternalI2CWrite"));
    EXPECT_FALSE(WasCalled("SetInt InternalI2CByteSelector 3"));
  }
}

TEST_F(I2c, EachRefusedStepHasItsStatus)
{
  const std::pair<const char*, int> steps[] = {
      {"IsImplemented", 2}, {"SetInt InternalI2CAddress", 3}, {"SetInt InternalI2CByteCount", 4}, {"Command", 2}};
  for (const auto& [step, status] : steps) {
    vx_.codes = {{step, VX_ERR_NOT_WRITABLE}};
    vx_.calls.clear();
    EXPECT_EQ(bus_.Read(0x20, data_, 1), status) << step;
    EXPECT_EQ(vx_.calls.back().rfind(step, 0), 0u) << "nothing behind the failed step: " << vx_.calls.back();
    EXPECT_EQ(bus_.Write(0x20, data_, 1), status) << step;
  }
  EXPECT_EQ(data_[0], 1);

  vx_ = TStagedVx{};
  EXPECT_EQ(bus_.Read(0x20, nullptr, 1), 2);
  EXPECT_EQ(bus_.Write(0x20, nullptr, 1), 2);
  EXPECT_FALSE(WasCalled("Command InternalI2CWrite"));
  vx_.calls.clear();
  TSDK3i2c none(-1, L"Internal");
  EXPECT_EQ(none.Read(0x20, data_, 1), 2);
  EXPECT_EQ(none.Write(0x20, data_, 1), 2);
  EXPECT_TRUE(vx_.calls.empty());
}

TEST_F(I2c, SenselessCountEndsSoon)
{
  vx_.codes = {{"SetInt InternalI2CByteSelector", VX_ERR_OUT_OF_RANGE}};
  EXPECT_EQ(bus_.Read(0x20, data_, UINT_MAX), 2);
  EXPECT_LT(vx_.calls.size(), 3000u);

  // More failures than that, and never so many in a row: of every number that begins with 1.
  vx_.codes = {{"SetInt InternalI2CByteSelector 1", VX_ERR_OUT_OF_RANGE}};
  std::vector<unsigned char> many(2500);
  vx_.bytes.resize(many.size(), 5);
  EXPECT_EQ(bus_.Read(0x20, many.data(), 2500), 2);
  EXPECT_EQ(many.back(), 5);
}

} // namespace
