// SPDX-License-Identifier: MIT
// Choosing, opening and closing cameras, and the version.
#include "tests/support/SimulatedCameraTest.h"

#include <cstring>
#include <thread>

extern long gblVxmcdCameraHandle;

namespace {

class Selection : public SimulatedCameraTest
{
protected:
  Selection() : SimulatedCameraTest(kTwoManualCameras) {}
};

TEST_F(Selection, HandlesCountUpFrom101)
{
  long count = 0;
  EXPECT_EQ(GetAvailableCameras(&count), RC_SUCCESS);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(VXSIM_GetInitialiseCount(), 0) << "the library is finalised again";

  long handle = 0;
  EXPECT_EQ(GetCameraHandle(1, &handle), RC_SUCCESS);
  EXPECT_EQ(handle, 102);
  for (const long index : {-1L, 2L, 1L << 40}) EXPECT_EQ(GetCameraHandle(index, &handle), RC_P1_INVALID);
  EXPECT_EQ(handle, 102);
  EXPECT_EQ(GetCameraHandle(0, nullptr), RC_SUCCESS);

  for (const long wrong : {100L, 103L, -1L, 0L}) EXPECT_EQ(SetCurrentCamera(wrong), RC_P1_INVALID);
  EXPECT_EQ(SetCurrentCamera(102), RC_SUCCESS);
  EXPECT_EQ(GetCurrentCamera(&handle), RC_SUCCESS);
  EXPECT_EQ(handle, 102);
}

TEST_F(Selection, UncountableCamerasCannotBeChosen)
{
  for (const char* rule : {"call VX_GetInt feature DeviceCount any rc 53", "call VX_InitialiseLibrary rc 55"}) {
    VXSIM_ClearFaults();
    VXSIM_AddFault(rule);
    long value = 77;
    EXPECT_EQ(GetAvailableCameras(&value), RC_NOT_SUPPORTED) << rule;
    EXPECT_EQ(GetCameraHandle(0, &value), RC_NOT_SUPPORTED) << rule;
    EXPECT_EQ(SetCurrentCamera(102), RC_NOT_SUPPORTED) << rule;
    EXPECT_EQ(value, 77);
    GetCurrentCamera(&value);
    EXPECT_EQ(value, 101);
  }
  EXPECT_EQ(Initialize(nullptr), RC_NO_CAMERA);
  EXPECT_EQ(ShutDown(), RC_NOT_INITIALIZED);
}

TEST_F(Selection, TwoCamerasAreOpenAtOnceAndSwitchedBetween)
{
  int handles[2] = {};
  EXPECT_EQ(GetSDK3Handle(nullptr), RC_P1_INVALID);
  EXPECT_EQ(GetSDK3Handle(&handles[0]), RC_SUCCESS);
  EXPECT_EQ(handles[0], -1) << "not open yet";

  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  ASSERT_EQ(SetCurrentCamera(102), RC_SUCCESS);
  EXPECT_EQ(SetExposureTime(0.01F), RC_NOT_INITIALIZED) << "chosen, but not opened";
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  int width = 0;
  int height = 0;
  EXPECT_EQ(GetDetector(&width, &height), RC_SUCCESS);
  EXPECT_EQ(width, 512);
  GetSDK3Handle(&handles[1]);

  ASSERT_EQ(SetCurrentCamera(101), RC_SUCCESS);
  EXPECT_EQ(GetDetector(&width, &height), RC_SUCCESS);
  EXPECT_EQ(width, 2048);
  GetSDK3Handle(&handles[0]);
  EXPECT_NE(handles[0], handles[1]);
  EXPECT_EQ(VXSIM_GetOpenCount(), 2);

  ASSERT_EQ(ShutDown(), RC_SUCCESS);
  EXPECT_EQ(GetDetector(&width, &height), RC_NOT_INITIALIZED);
  ASSERT_EQ(SetCurrentCamera(102), RC_SUCCESS);
  EXPECT_EQ(GetDetector(&width, &height), RC_SUCCESS) << "the other one is still open";
}

// Programs linked to the exported object may write it: then every function acts on that camera.
TEST_F(Selection, TheCurrentHandleIsFollowedWhoeverWritesIt)
{
  long& current = gblVxmcdCameraHandle;
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  int first = 0;
  GetSDK3Handle(&first);
  ASSERT_EQ(SetCurrentCamera(102), RC_SUCCESS);
  EXPECT_EQ(current, 102);

  const auto seen = [] {
    int handle = 0;
    int width = 0;
    int height = 0;
    int status = 0;
    GetSDK3Handle(&handle);
    const unsigned int codes[] = {GetDetector(&width, &height), GetStatus(&status), SetMetaData(1)};
    for (const unsigned int code : codes) EXPECT_EQ(code, codes[0]);
    return codes[0] == RC_SUCCESS ? handle : -1;
  };
  EXPECT_EQ(seen(), -1) << "not open";
  current = 101;
  EXPECT_EQ(seen(), first);
  for (const long stranger : {100L, 102L, -1L, (1L << 32) + 101}) {
    current = stranger;
    EXPECT_EQ(seen(), -1) << stranger;
  }
  current = 102;
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  EXPECT_NE(seen(), -1);
  ASSERT_EQ(ShutDown(), RC_SUCCESS);
  EXPECT_EQ(seen(), -1);
  current = 101;
  EXPECT_EQ(seen(), first) << "the other one is still open";
  ASSERT_EQ(ShutDown(), RC_SUCCESS);
  for (const long stranger : {(1L << 32) + 101, 1L << 63}) {
    current = stranger;
    EXPECT_EQ(Initialize(nullptr), RC_NO_CAMERA) << stranger;
  }
}

TEST_F(Selection, AThreadMayHaveItsOwnCurrentCamera)
{
  long earlier = 77;
  for (const long wrong : {100L, 103L, -1L})
    EXPECT_EQ(vxmcd_SetCurrentCameraOfThread(wrong, &earlier), RC_P1_INVALID);
  EXPECT_EQ(earlier, 77);
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  const auto device = [] {
    int handle = 0;
    int status = 0;
    GetSDK3Handle(&handle);
    EXPECT_EQ(GetStatus(&status), handle == -1 ? RC_NOT_INITIALIZED : RC_SUCCESS);
    return handle;
  };
  const auto current = [] {
    long handle = 0;
    GetCurrentCamera(&handle);
    return handle;
  };
  const int first = device();
  std::thread([&] {
    EXPECT_EQ(vxmcd_SetCurrentCameraOfThread(102, &earlier), RC_SUCCESS);
    EXPECT_EQ(earlier, 0);
    EXPECT_EQ(device(), -1) << "not open yet";
    ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
    const int second = device();
    EXPECT_NE(second, first);
    gblVxmcdCameraHandle = 101;
    EXPECT_EQ(current(), 102);
    EXPECT_EQ(device(), second);

    VXSIM_AddFault("call VX_GetInt feature DeviceCount any rc 53");
    EXPECT_EQ(vxmcd_SetCurrentCameraOfThread(101, &earlier), RC_SUCCESS) << "it is open";
    EXPECT_EQ(earlier, 102);
    EXPECT_EQ(device(), first);
    EXPECT_EQ(SetCurrentCamera(102), RC_NOT_SUPPORTED);
    VXSIM_ClearFaults();
    EXPECT_EQ(SetCurrentCamera(102), RC_SUCCESS) << "of this thread";
    EXPECT_EQ(device(), second);
    EXPECT_EQ(gblVxmcdCameraHandle, 101);
    EXPECT_EQ(ShutDown(), RC_SUCCESS);
    EXPECT_EQ(ShutDown(), RC_NOT_INITIALIZED);
    EXPECT_EQ(current(), 102);
    VXSIM_AddFault("call VX_GetInt feature DeviceCount any rc 53");
    EXPECT_EQ(vxmcd_SetCurrentCameraOfThread(102, &earlier), RC_NOT_SUPPORTED) << "it is not open any more";
    EXPECT_EQ(vxmcd_SetCurrentCameraOfThread(0, nullptr), RC_SUCCESS);
    VXSIM_ClearFaults();
    EXPECT_EQ(device(), first);
  }).join();
  EXPECT_EQ(current(), 101);
  EXPECT_EQ(device(), first);
}

TEST_F(Selection, OpeningTwiceLeavesTheCameraAlone)
{
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  VXSIM_StartCallLog(1);
  EXPECT_EQ(Initialize(nullptr), RC_SUCCESS);
  EXPECT_EQ(VXSIM_GetCallCount(), 0u);
}

TEST_F(Selection, OpenAndCloseAskTheCameraInAFixedOrder)
{
  VXSIM_StartCallLog(1);
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  EXPECT_EQ(LoggedCalls(),
            (std::vector<std::string>{
                "VX_InitialiseLibrary -> 0", "VX_Open 0 -> 0", "VX_IsImplemented CameraModel -> 0",
                "VX_GetEnumIndex PreAmpGainChannel -> 0", "VX_GetEnumStringByIndex PreAmpGainChannel 2 -> 0",
                "VX_IsImplemented SimplePreAmpGainControl -> 0", "VX_SetBool MetadataEnable 1 -> 0"}));
  VXSIM_StartCallLog(1);
  ASSERT_EQ(ShutDown(), RC_SUCCESS);
  EXPECT_EQ(LoggedCalls(),
            (std::vector<std::string>{"VX_GetBool CameraAcquiring -> 0", "VX_SetBool MetadataEnable 0 -> 0",
                                      "VX_Close -> 0", "VX_FinaliseLibrary -> 0"}));
}

// While one camera is open the feature library stays open too, and closes no handle that is left.
TEST_F(Selection, DeviceThatDoesNotOpenOrHasNoModelIsNoCamera)
{
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  ASSERT_EQ(SetCurrentCamera(102), RC_SUCCESS);
  for (const char* rule :
       {"call VX_Open rc 53", "call VX_Open out -1", "call VX_IsImplemented feature CameraModel rc 53",
        "call VX_IsImplemented feature CameraModel out 0", "call VX_IsImplemented feature CameraModel out 2"}) {
    ASSERT_EQ(VXSIM_AddFault(rule), VX_SUCCESS);
    EXPECT_EQ(Initialize(nullptr), RC_NO_CAMERA) << rule;
    EXPECT_EQ(ShutDown(), RC_NOT_INITIALIZED) << rule;
    EXPECT_EQ(VXSIM_GetOpenCount(), 1) << rule;
    EXPECT_EQ(VXSIM_GetInitialiseCount(), 1) << rule;
    VXSIM_ClearFaults();
  }
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
}

TEST(Version, IsReportedInEveryForm)
{
  unsigned int v[6] = {9, 9, 9, 9, 9, 9};
  EXPECT_EQ(getSDKVersion(&v[0], &v[1], &v[2], &v[3]), RC_SUCCESS);
  EXPECT_EQ(std::vector<unsigned int>(v, v + 4), (std::vector<unsigned int>{2, 94, 32007, 0}));
  EXPECT_EQ(getSDKVersion(&v[0], nullptr, nullptr, nullptr), RC_SUCCESS);
  EXPECT_EQ(GetSoftwareVersion(&v[0], &v[1], &v[2], &v[3], &v[4], &v[5]), RC_SUCCESS);
  EXPECT_EQ(std::vector<unsigned int>(v, v + 6), (std::vector<unsigned int>{0, 0, 0, 0, 94, 2}));

  char text[32] = {};
  EXPECT_EQ(GetVersionInfo(VXMCD_VERSION_LIBRARY, text, sizeof text), RC_SUCCESS);
  EXPECT_STREQ(text, "2.94.32007.0");
  EXPECT_EQ(GetVersionInfo(VXMCD_VERSION_DRIVER, text, sizeof text), RC_NOT_AVAILABLE);
  EXPECT_STREQ(text, "Unknown");
}

TEST(Version, TextIsCutWithoutATerminatorAndChecksHaveTheirOrder)
{
  char text[8];
  std::memset(text, 'x', sizeof text);
  EXPECT_EQ(GetVersionInfo(VXMCD_VERSION_LIBRARY, text, 4), RC_SUCCESS);
  EXPECT_EQ(std::string(text, 8), "2.94xxxx");
  EXPECT_EQ(GetVersionInfo(0x40000002, nullptr, 0), RC_P1_INVALID);
  EXPECT_EQ(GetVersionInfo(VXMCD_VERSION_LIBRARY, nullptr, 0), RC_P3_INVALID);
  EXPECT_EQ(GetVersionInfo(VXMCD_VERSION_LIBRARY, nullptr, 4), RC_P2_INVALID);
}

} // namespace
