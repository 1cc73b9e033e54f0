// SPDX-License-Identifier: MIT
// Mode numbers and counts, as the camera and the manager get to know them.
#include "acquisition/TPseudoAcquisitionMode.h"
#include "acquisition/TVxmcdAcquisitionManager.h"
#include "features/feature_interfaces.h"
#include "tests/support/TFakeEnum.h"
#include "utility/TQuorinCriticalSection.h"
#include "vxcore.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

class TFakeInt final : public IInt
{
public:
  int SetInt(int value) override
  {
    if (code == VX_SUCCESS && value > limit) return limitCode;
    if (code == VX_SUCCESS) present = value;
    return code;
  }
  int GetInt(int& value) override
  {
    value = present;
    return code;
  }

  int present = 1;
  int code = VX_SUCCESS;
  int limit = INT_MAX; ///< what is above it is not written, with its own code
  int limitCode = VX_ERR_OUT_OF_RANGE;
};

class PseudoAcquisitionMode : public ::testing::Test
{
protected:
  PseudoAcquisitionMode() { encoding_.present = L"Mono16"; }

  QuorinUtility::TQuorinCriticalSection cameraLock_;
  TVxmcdAcquisitionManager manager_{&cameraLock_, kNoCoreHandle};
  TFakeEnum encoding_{{L"Mono12", L"Mono16", L"Mono32"}};
  TFakeEnum cycle_{{L"Fixed", L"Continuous"}};
  TFakeInt accumulate_;
  TFakeInt frames_;
  TPseudoAcquisitionMode mode_{&manager_, &encoding_, &cycle_, &accumulate_, &frames_};
};

TEST_F(PseudoAcquisitionMode, WritesWhatEachModeNeeds)
{
  ASSERT_EQ(mode_.SetNumberAccumulations(4), 0);
  ASSERT_EQ(mode_.SetNumberKinetics(10), 0);

  EXPECT_EQ(mode_.SetMode(2), 0);
  EXPECT_EQ(cycle_.present, L"Fixed");
  EXPECT_EQ(accumulate_.present, 4);
  EXPECT_EQ(frames_.present, 4);
  EXPECT_EQ(encoding_.present, L"Mono32");
  EXPECT_EQ(mode_.GetSeriesLength(), 1);

  EXPECT_EQ(mode_.SetMode(3), 0);
  EXPECT_EQ(frames_.present, 40) << "exposures, not images";
  EXPECT_EQ(mode_.GetSeriesLength(), 10);

  EXPECT_EQ(mode_.SetMode(1), 0);
  EXPECT_EQ(accumulate_.present, 1);
  EXPECT_EQ(frames_.present, 1);
  EXPECT_EQ(encoding_.present, L"Mono16") << "as it was before accumulation";

  EXPECT_EQ(mode_.SetMode(5), 0);
  EXPECT_EQ(cycle_.present, L"Continuous");
  EXPECT_EQ(mode_.GetSeriesLength(), INT_MAX);

  for (const int unknown : {0, 4, 6, -1}) EXPECT_EQ(mode_.SetMode(unknown), 1);
  EXPECT_EQ(mode_.GetMode(), 5);
}

TEST_F(PseudoAcquisitionMode, CountsTakeEffectAtOnceInAnActiveMode)
{
  mode_.SetMode(3);
  EXPECT_EQ(mode_.SetNumberKinetics(7), 0);
  EXPECT_EQ(frames_.present, 7);
  EXPECT_EQ(mode_.SetNumberAccumulations(3), 0);
  EXPECT_EQ(frames_.present, 21);
  EXPECT_EQ(encoding_.present, L"Mono32");
  EXPECT_EQ(mode_.SetNumberAccumulations(1), 0);
  EXPECT_EQ(encoding_.present, L"Mono16");
  encoding_.present = L"Mono12";
  EXPECT_EQ(mode_.SetNumberKinetics(8), 0);
  EXPECT_EQ(encoding_.present, L"Mono12") << "put back once";
}

TEST_F(PseudoAcquisitionMode, RejectsCountsThatNoRunCanHave)
{
  mode_.SetMode(3);
  mode_.SetNumberKinetics(5);
  for (const int count : {0, -1}) {
    EXPECT_EQ(mode_.SetNumberKinetics(count), 1);
    EXPECT_EQ(mode_.SetNumberAccumulations(count), 1);
  }
  EXPECT_EQ(mode_.SetNumberAccumulations(INT_MAX), 1) << "more exposures than can be counted";

  frames_.code = VX_ERR_OUT_OF_RANGE;
  EXPECT_EQ(mode_.SetNumberKinetics(900), 1);
  EXPECT_EQ(mode_.GetSeriesLength(), 5);
  EXPECT_EQ(mode_.SetNumberAccumulations(8), 1);
  EXPECT_EQ(accumulate_.present, 1) << "the camera keeps nothing of a rejected count";
  EXPECT_EQ(encoding_.present, L"Mono16");
}

// Nothing is pending on a camera whose only value is the one that is asked for.
TEST_F(PseudoAcquisitionMode, WhatTheCameraHasAlreadyNeedNotBeWritten)
{
  frames_.present = 6;
  frames_.limit = 0;
  frames_.limitCode = VX_ERR_NOT_WRITABLE;
  mode_.SetNumberKinetics(6);
  EXPECT_EQ(mode_.SetMode(3), 0);
  EXPECT_EQ(mode_.SetNumberKinetics(7), 4);
}

TEST_F(PseudoAcquisitionMode, CameraWithoutAccumulationTakesSingleExposures)
{
  accumulate_.code = VX_ERR_NOT_IMPLEMENTED;
  EXPECT_EQ(mode_.SetNumberAccumulations(2), 5);
  EXPECT_EQ(mode_.SetNumberAccumulations(1), 0);
  EXPECT_EQ(mode_.SetMode(3), 0);
  EXPECT_EQ(mode_.SetNumberKinetics(6), 0);
  EXPECT_EQ(frames_.present, 6);

  frames_.code = VX_ERR_NOT_IMPLEMENTED;
  EXPECT_EQ(mode_.SetNumberKinetics(2), 5);
}

TEST_F(PseudoAcquisitionMode, EncodingStaysWhenTheCameraHasNoWiderOne)
{
  encoding_.available = false;
  mode_.SetNumberAccumulations(2);
  mode_.SetMode(2);
  EXPECT_EQ(encoding_.present, L"Mono16");
}

} // namespace
