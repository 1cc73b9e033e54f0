// SPDX-License-Identifier: MIT
// Image area, binning and tracks: what is written to the camera, in which order, and which failure is reported.
#include "tests/support/SimulatedCameraTest.h"

#include <climits>

namespace {

using TCalls = std::vector<std::string>;

constexpr const char* kSquareBinningCamera = "[Simulator]\nCameras=2\n[Camera0]\nModel=TRELLIS CMOS\n"
                                             "Source=manual\n[Camera1]\nModel=TARN 1M\nSource=manual\n";

class ImageArea : public SimulatedCameraTest
{
protected:
  ImageArea() : SimulatedCameraTest(kSquareBinningCamera) {}

  void SetUp() override
  {
    SimulatedCameraTest::SetUp();
    ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  }

  void OpenSquareBinningCamera()
  {
    ASSERT_EQ(SetCurrentCamera(102), RC_SUCCESS);
    ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  }

  /// The calls that `operation` makes, and its code.
  template <class Operation>
  static TCalls CallsOf(unsigned int code, Operation operation)
  {
    VXSIM_StartCallLog(1);
    EXPECT_EQ(operation(), code);
    VXSIM_StopCallLog();
    return LoggedCalls();
  }
};

TEST_F(ImageArea, IsWrittenInAFixedOrder)
{
  EXPECT_EQ(CallsOf(RC_SUCCESS, [] { return SetImage(2, 2, 1, 2048, 1, 2048); }),
            (TCalls{"VX_GetEnumerated AOILayout -> 0", "VX_SetEnumeratedString AOILayout Image -> 0",
                    "VX_SetInt AOIHBin 2 -> 0", "VX_SetInt AOIVBin 2 -> 0", "VX_SetInt AOIWidth 1024 -> 0",
                    "VX_SetInt AOILeft 1 -> 0", "VX_GetInt SensorHeight -> 0", "VX_SetInt AOIHeight 1024 -> 0",
                    "VX_SetInt AOITop 1 -> 0", "VX_SetEnumerated AOILayout 0 -> 0"}));
  EXPECT_EQ(SetImage(3, 1, 11, 110, 21, 70), RC_SUCCESS);
  EXPECT_EQ(GetInt(L"AOIWidth"), 33) << "a part of a binned pixel is dropped";
  EXPECT_EQ(GetInt(L"AOIHeight"), 50);
  EXPECT_EQ(GetInt(L"AOILeft"), 11);
  EXPECT_EQ(GetInt(L"AOITop"), 21);
}

TEST_F(ImageArea, LeavesTheLayoutAsItIs)
{
  EXPECT_EQ(SetReadMode(2), RC_SUCCESS);
  EXPECT_EQ(SetImage(1, 1, 1, 64, 1, 32), RC_SUCCESS);
  EXPECT_EQ(GetText(L"AOILayout"), L"Track");
  EXPECT_EQ(SetReadMode(4), RC_SUCCESS);
  EXPECT_EQ(GetInt(L"AOIHeight"), 32);
}

TEST_F(ImageArea, LastFailureOfTheOrderIsReported)
{
  EXPECT_EQ(SetImage(1, 1, 3000, 9000, 1, 100), RC_P3_INVALID) << "the start, though the width is wrong too";
  EXPECT_EQ(SetImage(1, 1, 1, 9000, 1, 100), RC_P4_INVALID);
  EXPECT_EQ(SetImage(1, 1, 1, 9000, 1, 9000), RC_P5_INVALID);
  EXPECT_EQ(SetImage(1, 1, 1, 9000, 3000, 9000), RC_P6_INVALID);
  EXPECT_EQ(SetImage(1, 1, 1, 100, 3000, 3099), RC_P6_INVALID);
  EXPECT_EQ(GetInt(L"AOIHeight"), 100) << "the rest is written all the same";
  EXPECT_EQ(SetImage(1, 1, INT_MIN, INT_MAX / 2, INT_MIN, INT_MAX / 2), RC_P6_INVALID);
  EXPECT_EQ(SetImage(1, 1, INT_MAX, INT_MIN / 2, INT_MAX, INT_MIN / 2), RC_P6_INVALID);

  EXPECT_EQ(SetImage(1000, 1, 1, 2048, 1, 64), RC_SUCCESS) << "a binning that the camera lacks is not reported";
  VXSIM_AddFault("call VX_SetInt any rc 5");
  EXPECT_EQ(SetImage(1, 1, 1, 64, 1, 64), RC_SUCCESS) << "nor is any other failure";
}

TEST_F(ImageArea, BinningBelowOneIsRefusedBeforeAnythingIsWritten)
{
  EXPECT_TRUE(CallsOf(RC_P1_INVALID, [] { return SetImage(0, 0, 1, 8, 1, 8); }).empty());
  EXPECT_TRUE(CallsOf(RC_P2_INVALID, [] { return SetImage(1, INT_MIN, 1, 8, 1, 8); }).empty());
}

TEST_F(ImageArea, SquareBinningIsTakenWhereThereIsNoOther)
{
  OpenSquareBinningCamera();
  const TCalls calls = CallsOf(RC_SUCCESS, [] { return SetImage(4, 1, 1, 1280, 1, 256); });
  EXPECT_EQ(TCalls(calls.begin() + 2, calls.begin() + 4),
            (TCalls{"VX_SetInt AOIHBin 4 -> 2", "VX_SetEnumeratedString AOIBinning 4x4 -> 0"}));
  EXPECT_EQ(GetText(L"AOIBinning"), L"4x4");
  EXPECT_EQ(GetInt(L"AOIWidth"), 320);
}

TEST_F(ImageArea, TracksAreUsedFromTheLastPair)
{
  VXSIM_AddFault("value SensorHeight set 100");
  int areas[] = {1, 10, 20, 30};
  EXPECT_EQ(CallsOf(RC_SUCCESS, [&] { return SetRandomTracks(2, areas); }),
            (TCalls{"VX_IsImplemented AOILayout -> 0", "VX_GetEnumerated AOILayout -> 0",
                    "VX_SetEnumeratedString AOILayout Track -> 0", "VX_SetInt AOICount 2 -> 0",
                    "VX_GetInt SensorHeight -> 0", "VX_SetInt AOISelector 1 -> 0", "VX_SetInt AOIHBin 1 -> 0",
                    "VX_SetInt AOITop 71 -> 0", "VX_SetInt AOIVBin 11 -> 0", "VX_SetInt AOISelector 2 -> 0",
                    "VX_SetInt AOIHBin 1 -> 0", "VX_SetInt AOITop 91 -> 0", "VX_SetInt AOIVBin 10 -> 0",
                    "VX_SetEnumerated AOILayout 0 -> 0"}));
}

TEST_F(ImageArea, TracksEndAtTheFirstThatIsRefused)
{
  int areas[] = {1, 10, 20, 30, 40, 50};
  VXSIM_AddFault("call VX_SetInt feature AOIVBin any rc 6");
  EXPECT_EQ(CallsOf(RC_P2_INVALID, [&] { return SetRandomTracks(3, areas); }),
            (TCalls{"VX_IsImplemented AOILayout -> 0", "VX_GetEnumerated AOILayout -> 0",
                    "VX_SetEnumeratedString AOILayout Track -> 0", "VX_SetInt AOICount 3 -> 0",
                    "VX_GetInt SensorHeight -> 0", "VX_SetInt AOISelector 1 -> 0", "VX_SetInt AOIHBin 1 -> 0",
                    "VX_SetInt AOITop 1999 -> 0", "VX_SetInt AOIVBin 11 -> 6", "VX_SetInt AOISelector 2 -> 0",
                    "VX_SetInt AOIHBin 1 -> 0", "VX_SetInt AOISelector 3 -> 0", "VX_SetInt AOIHBin 1 -> 0",
                    "VX_SetEnumerated AOILayout 0 -> 0"}));
  VXSIM_ClearFaults();
  int upsideDown[] = {30, 20};
  EXPECT_EQ(SetRandomTracks(1, upsideDown), RC_P2_INVALID);
  for (const int count : {0, -1, 100000, INT_MAX}) EXPECT_EQ(SetRandomTracks(count, areas), RC_P1_INVALID);
  EXPECT_EQ(SetRandomTracks(1, nullptr), RC_P2_INVALID);
  EXPECT_EQ(SetRandomTracks(0, nullptr), RC_P1_INVALID);
  EXPECT_EQ(GetText(L"AOILayout"), L"Image");
}

TEST_F(ImageArea, LargestBinningIsAnsweredWithZero)
{
  int maximum = 77;
  EXPECT_EQ(GetMaximumBinning(4, 0, &maximum), 0u) << "not RC_SUCCESS";
  EXPECT_EQ(maximum, 64);
  for (const int wrong : {2, -1, INT_MIN}) EXPECT_EQ(GetMaximumBinning(4, wrong, &maximum), RC_P2_INVALID);
  EXPECT_EQ(GetMaximumBinning(4, 2, nullptr), RC_P2_INVALID);
  EXPECT_EQ(GetMaximumBinning(4, 1, nullptr), RC_P3_INVALID);
  EXPECT_EQ(maximum, 64);
  VXSIM_AddFault("call VX_GetIntMax feature AOIVBinInternal any rc 53");
  EXPECT_EQ(GetMaximumBinning(4, 1, &maximum), RC_BINNING_QUERY_FAILED);
  EXPECT_EQ(maximum, 1);
  OpenSquareBinningCamera();
  maximum = 77;
  EXPECT_EQ(GetMaximumBinning(4, 0, &maximum), 0u);
  EXPECT_EQ(maximum, 1);
}

} // namespace
