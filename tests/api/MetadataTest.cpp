// SPDX-License-Identifier: MIT
// Timestamps of frames, as a program reads them.
#include "tests/support/SimulatedCameraTest.h"

namespace {

class Metadata : public SimulatedCameraTest
{
protected:
  /// Runs one series of frames as the camera makes them.
  void TakeFrames(int frames)
  {
    ASSERT_EQ(SetAcquisitionMode(3), RC_SUCCESS);
    ASSERT_EQ(SetNumberKinetics(frames), RC_SUCCESS);
    ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
    ASSERT_EQ(VXSIM_PushFrames(0, frames), VX_SUCCESS);
    ASSERT_TRUE(Eventually([] { return Status() == RC_IDLE; }));
  }
};

TEST_F(Metadata, EachFrameHasATimestampThatGrows)
{
  Open();
  TakeFrames(4);
  unsigned int count = 0;
  long long previous = -1;
  for (unsigned int index = 0; index < 4; ++index) {
    long long ticks = -1;
    ASSERT_EQ(vxsys_GetRawMetaDataInfo(&count, &ticks, index), RC_SUCCESS) << index;
    EXPECT_EQ(count, 4u);
    EXPECT_GT(ticks, previous);
    previous = ticks;
  }
  long long untouched = 77;
  EXPECT_EQ(vxsys_GetRawMetaDataInfo(&count, &untouched, 4), RC_FEATURE_ERROR);
  EXPECT_EQ(untouched, 77);
  EXPECT_EQ(vxsys_GetRawMetaDataInfo(nullptr, nullptr, 0), RC_SUCCESS);
}

TEST_F(Metadata, IndexCountsExposures)
{
  Open();
  TakeFrames(3);
  long long third = 0;
  ASSERT_EQ(vxsys_GetRawMetaDataInfo(nullptr, &third, 2), RC_SUCCESS);
  VXSIM_AddFault("value AccumulateCount set 4");
  long long ticks = 0;
  ASSERT_EQ(vxsys_GetRawMetaDataInfo(nullptr, &ticks, 9), RC_SUCCESS);
  EXPECT_EQ(ticks, third);

  for (const char* rule : {"value AccumulateCount set 0", "value AccumulateCount set -5",
                           "call VX_GetInt feature AccumulateCount any rc 53"}) {
    VXSIM_ClearFaults();
    VXSIM_AddFault(rule);
    EXPECT_EQ(vxsys_GetRawMetaDataInfo(nullptr, &ticks, 0), RC_FEATURE_ERROR) << rule;
  }
}

TEST_F(Metadata, IsThereWhenItWasOnAtTheStart)
{
  Open();
  long long ticks = 0;
  EXPECT_EQ(vxsys_GetRawMetaDataInfo(nullptr, &ticks, 0), RC_NOT_AVAILABLE) << "before any run";
  ASSERT_EQ(SetMetaData(0), RC_SUCCESS);
  TakeFrames(1);
  EXPECT_EQ(vxsys_GetRawMetaDataInfo(nullptr, &ticks, 0), RC_NOT_AVAILABLE);
  ASSERT_EQ(SetMetaData(1), RC_SUCCESS);
  EXPECT_EQ(vxsys_GetRawMetaDataInfo(nullptr, &ticks, 0), RC_NOT_AVAILABLE) << "from the next start on";
  TakeFrames(1);
  EXPECT_EQ(vxsys_GetRawMetaDataInfo(nullptr, &ticks, 0), RC_SUCCESS);

  VXSIM_AddFault("call VX_IsImplemented feature MetadataEnable any out 0");
  EXPECT_EQ(vxsys_GetRawMetaDataInfo(nullptr, &ticks, 0), RC_NOT_SUPPORTED);
}

} // namespace
