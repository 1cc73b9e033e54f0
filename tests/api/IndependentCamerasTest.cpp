// SPDX-License-Identifier: MIT
// Several cameras that acquire at the same time. Each frame shows which camera made it: the stamp has a hash of the
// camera's seed, and each camera has a seed of its own.
#include "tests/support/CounterCameraTest.h"
#include "vxcore/simulated/imaging/TCounterPattern.h"

#include <span>
#include <thread>

namespace {

constexpr int kCameras = 8;
constexpr long kFirst = 101;

std::string Configuration()
{
  std::string text = "[Simulator]\nCameras=" + std::to_string(kCameras) + "\n";
  for (int camera = 0; camera < kCameras; ++camera) {
    const std::string section = "[Camera" + std::to_string(camera);
    // Cameras 0 and 1 make frames when the test says so, the others in real time.
    text += section +
            "]\nModel=RQ512_LX\nScene=counter\nNoise=off\nStridePadding=0\nSeed=" + std::to_string(camera + 1) +
            (camera < 2 ? "\nSource=manual\n" : "\nClock=real\n");
    text += section + (camera < 2 ? ".ExposureTime]\nMax=30\nValue=20\n" : ".ExposureTime]\nValue=0.0002\n");
    text += section + ".AOIWidth]\nValue=16\n" + section + ".AOIHeight]\nValue=8\n";
  }
  return text;
}

const std::string configuration = Configuration();

struct TStamp
{
  std::uint32_t camera = 0; ///< the hash of its seed; 0 when the image is not whole
  std::uint32_t run = 0;
  std::uint64_t frame = 0;
};

TStamp StampOf(const TCounterImage& image)
{
  const auto* const bytes = reinterpret_cast<const unsigned char*>(image.data());
  const auto found = vxsim::TCounterPattern::VerifyAny(std::span(bytes, sizeof image));
  return found ? TStamp{found.head.seedHash, found.head.runNumber, found.head.frameNumber} : TStamp{};
}

std::uint32_t SeedHashOf(int camera)
{
  TCounterImage image{};
  const vxsim::TCounterPattern::TKey key{static_cast<std::uint64_t>(camera) + 1, 1, 1, 0};
  vxsim::TCounterPattern::Fill(std::span(reinterpret_cast<unsigned char*>(image.data()), sizeof image), key);
  return StampOf(image).camera;
}

class IndependentCameras : public SimulatedCameraTest
{
protected:
  IndependentCameras() : SimulatedCameraTest(configuration.c_str()) {}

  void TearDown() override
  {
    for (long handle = kFirst; handle < kFirst + kCameras; ++handle)
      if (SetCurrentCamera(handle) == RC_SUCCESS) ShutDown();
    EXPECT_EQ(vxmcd_SetIndependentCameras(0), RC_SUCCESS) << "no run is left";
    SimulatedCameraTest::TearDown();
  }

  void OpenAndStart(long handle, int mode)
  {
    OpenCamera(handle);
    ASSERT_EQ(SetAcquisitionMode(mode), RC_SUCCESS);
    ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  }

  static long ImagesOf(long handle)
  {
    long images = -1;
    SetCurrentCamera(handle);
    GetTotalNumberImagesAcquired(&images);
    return images;
  }

  // Every image of the camera's ring is of that camera, and they follow each other from the first on.
  static void ExpectOwnImages(long handle, long count)
  {
    ASSERT_TRUE(Eventually([&] { return ImagesOf(handle) == count; })) << handle << " has " << ImagesOf(handle);
    for (long number = 1; number <= count; ++number) {
      TCounterImage image{};
      long first = 0;
      long last = 0;
      ASSERT_EQ(GetImages16(number, number, image.data(), image.size(), &first, &last), RC_SUCCESS);
      const TStamp stamp = StampOf(image);
      ASSERT_EQ(stamp.camera, SeedHashOf(static_cast<int>(handle - kFirst))) << handle << ", image " << number;
      ASSERT_EQ(stamp.frame, static_cast<std::uint64_t>(number)) << handle;
    }
  }
};

TEST_F(IndependentCameras, FramesEndAndAbortBelongToTheCameraThatStarted)
{
  ASSERT_EQ(vxmcd_SetIndependentCameras(1), RC_SUCCESS);
  OpenAndStart(102, kModeUntilAborted);
  OpenCamera(101);
  ASSERT_EQ(SetNumberKinetics(3), RC_SUCCESS);
  ASSERT_EQ(SetAcquisitionMode(kModeSeries), RC_SUCCESS);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  // The series of the one camera ends while the other one is current, which goes on.
  ASSERT_EQ(SetCurrentCamera(102), RC_SUCCESS);
  ASSERT_EQ(VXSIM_PushFrames(0, 3), VX_SUCCESS);
  ASSERT_EQ(VXSIM_PushFrames(1, 20), VX_SUCCESS);
  EXPECT_EQ(WaitForAcquisitionByHandleTimeOut(101, 60000), RC_SUCCESS);
  EXPECT_EQ(WaitForAcquisitionByHandleTimeOut(102, 60000), RC_SUCCESS);
  ExpectOwnImages(101, 3);
  ASSERT_TRUE(Eventually([] { return Status() == RC_IDLE; }));
  ASSERT_EQ(VXSIM_PushFrames(1, 20), VX_SUCCESS);
  ExpectOwnImages(102, 40);
  EXPECT_EQ(Status(), RC_ACQUIRING);
  // Closing the one does not disturb the other, and no camera need be current.
  ASSERT_EQ(SetCurrentCamera(101), RC_SUCCESS);
  ASSERT_EQ(ShutDown(), RC_SUCCESS);
  ASSERT_EQ(VXSIM_PushFrames(1, 20), VX_SUCCESS);
  ExpectOwnImages(102, 60);
  EXPECT_EQ(AbortAcquisition(), RC_SUCCESS);
  ExpectOwnImages(102, 60);
}

TEST_F(IndependentCameras, TheSettingStaysDuringRunsAndStarts)
{
  EXPECT_EQ(vxmcd_SetIndependentCameras(2), RC_P1_INVALID);
  EXPECT_EQ(vxmcd_SetIndependentCameras(-1), RC_P1_INVALID);
  OpenAndStart(101, kModeUntilAborted);
  ASSERT_EQ(SetCurrentCamera(103), RC_SUCCESS);
  EXPECT_EQ(vxmcd_SetIndependentCameras(1), RC_ACQUIRING) << "whichever camera is current";
  EXPECT_EQ(vxmcd_SetIndependentCameras(0), RC_SUCCESS) << "it is so already";
  SetCurrentCamera(101);
  ASSERT_EQ(AbortAcquisition(), RC_SUCCESS);
  EXPECT_EQ(vxmcd_SetIndependentCameras(1), RC_SUCCESS);
  // A start that waits for the camera.
  ASSERT_EQ(VXSIM_AddFault("call VX_Command feature AcquisitionStart at 1 delay 300ms"), VX_SUCCESS);
  std::thread starter([] { EXPECT_EQ(StartAcquisition(), RC_SUCCESS); });
  EXPECT_TRUE(Eventually([] { return VXSIM_GetFaultsFired() > 0; }));
  EXPECT_EQ(vxmcd_SetIndependentCameras(0), RC_ACQUIRING);
  starter.join();
  ASSERT_EQ(AbortAcquisition(), RC_SUCCESS);
  // A start that fails leaves nothing that would keep the setting.
  ASSERT_EQ(VXSIM_AddFault("call VX_Command feature AcquisitionStart any rc 37"), VX_SUCCESS);
  EXPECT_EQ(StartAcquisition(), RC_FRAME_UNAVAILABLE);
  EXPECT_EQ(vxmcd_SetIndependentCameras(0), RC_SUCCESS);
}

} // namespace
