// SPDX-License-Identifier: MIT
// Runs of a real camera through the flat interface: every pixel compared with what the camera sends.
#include "tests/genicam/GenICamTest.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace {

struct TPixelCase
{
  const char* format; ///< the only one of the camera
  const wchar_t* encoding;
  int bits;
};

class GenICamPixels : public GenICamRun, public testing::WithParamInterface<TPixelCase>
{
};

TEST_P(GenICamPixels, AreThoseOfTheCamera)
{
  Open({std::string("formats=") + GetParam().format, "increment=4"});
  for (const TArea& area : {TArea{0, 0, 512, 512}, {11, 21, 333, 101}}) {
    ASSERT_NO_FATAL_FAILURE(SetArea(area));
    ASSERT_NO_FATAL_FAILURE(SetEncoding(GetParam().encoding));
    SetRate(200);
    SetSeries(12);
    ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
    ASSERT_TRUE(WaitUntilIdle(5.0));
    EXPECT_EQ(Status(), static_cast<int>(RC_IDLE));
    std::uint64_t before = 0;
    for (long number = 1; number <= 12; ++number) {
      const std::uint64_t frame = FrameOf(Image(number, area), area, GetParam().bits);
      if (before != 0 && Int(L"FramesLost") == 0) {
        EXPECT_EQ(frame, FrameAfter(before)); // a busy machine may lose packets
      }
      before = frame;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, GenICamPixels,
    testing::Values(TPixelCase{"Mono8", L"Mono8", 8}, TPixelCase{"Mono12", L"Mono12", 12},
                    TPixelCase{"Mono12p", L"Mono12", 12}, TPixelCase{"Mono12p", L"Mono12Packed", 12},
                    TPixelCase{"Mono12Packed", L"Mono12Packed", 12}, TPixelCase{"Mono12", L"Mono12Packed", 12},
                    TPixelCase{"Mono10", L"Mono16", 10}, TPixelCase{"Mono16", L"Mono16", 16}));

TEST_F(GenICamRun, RunsUntilItIsAbortedAndTellsTheCamerasClock)
{
  Open();
  const TArea area{4, 8, 256, 256};
  SetArea(area);
  SetEncoding(L"Mono16");
  SetRate(100);
  ASSERT_EQ(SetMetaData(0), RC_SUCCESS);
  const long long plainBytes = Int(L"ImageSizeBytes");
  ASSERT_EQ(SetMetaData(1), RC_SUCCESS);
  EXPECT_EQ(Int(L"ImageSizeBytes"), plainBytes + 24);
  ASSERT_EQ(SetAcquisitionMode(5), RC_SUCCESS);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  // What a run depends on is not changed meanwhile, and the run goes on.
  EXPECT_EQ(SetMetaData(0), static_cast<unsigned int>(RC_NOT_AVAILABLE));
  EXPECT_EQ(VX_SetInt(Handle(), L"AOIWidth", 100), VX_ERR_NOT_WRITABLE);
  EXPECT_EQ(SetExposureTime(0.001F), RC_SUCCESS);
  std::uint64_t before = 0;
  long long missing = 0;
  std::vector<unsigned short> pixels(256UL * 256);
  for (int image = 0; image < 30; ++image) {
    ASSERT_EQ(WaitForAcquisitionTimeOut(2000), RC_SUCCESS);
    while (GetOldestImage16(pixels.data(), pixels.size()) == RC_SUCCESS) {
      const std::uint64_t frame = FrameOf(pixels, area, 16);
      for (; before != 0 && FrameAfter(before) != frame; before = FrameAfter(before)) ++missing;
      before = frame;
    }
  }
  EXPECT_LE(missing, Int(L"FramesLost")); // a busy machine may lose packets
  unsigned int count = 0;
  long long first = 0;
  long long second = 0;
  EXPECT_EQ(vxsys_GetRawMetaDataInfo(&count, &first, 10), RC_SUCCESS);
  EXPECT_EQ(vxsys_GetRawMetaDataInfo(&count, &second, 20), RC_SUCCESS);
  EXPECT_GE(second - first, 80'000'000); // ns
  EXPECT_LE(second - first, 200'000'000 + 10'000'000 * Int(L"FramesLost"));
  EXPECT_EQ(AbortAcquisition(), RC_SUCCESS);
  EXPECT_EQ(SetMetaData(0), RC_SUCCESS);
}

TEST_F(GenICamRun, SoftwareTriggerGivesOneImageEach)
{
  Open();
  const TArea area{0, 0, 256, 128};
  SetArea(area);
  SetEncoding(L"Mono12");
  ASSERT_EQ(SetTriggerMode(10), RC_SUCCESS);
  ASSERT_EQ(SetAcquisitionMode(5), RC_SUCCESS);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  EXPECT_EQ(WaitForAcquisitionTimeOut(200), static_cast<unsigned int>(RC_NO_NEW_DATA));
  std::vector<unsigned short> pixels(256UL * 128);
  for (int pulse = 0; pulse < 10; ++pulse) {
    ASSERT_EQ(SendSoftwareTrigger(), RC_SUCCESS);
    ASSERT_EQ(WaitForAcquisitionTimeOut(2000), RC_SUCCESS) << pulse;
    ASSERT_EQ(GetOldestImage16(pixels.data(), pixels.size()), RC_SUCCESS);
    EXPECT_NE(FrameOf(pixels, area, 12), 0U);
  }
  EXPECT_EQ(AbortAcquisition(), RC_SUCCESS);
}

TEST_F(GenICamRun, AddsUpFrames)
{
  Open({"formats=Mono12p,Mono8"});
  const TArea area{0, 0, 64, 64};
  SetArea(area);
  SetRate(200);
  ASSERT_EQ(SetAcquisitionMode(3), RC_SUCCESS);
  ASSERT_EQ(SetNumberAccumulations(4), RC_SUCCESS);
  ASSERT_EQ(SetNumberKinetics(3), RC_SUCCESS);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  ASSERT_TRUE(WaitUntilIdle(5.0));
  std::vector<int> sums(64UL * 64);
  long first = 0;
  long last = 0;
  ASSERT_EQ(GetImages(2, 2, sums.data(), sums.size(), &first, &last), RC_SUCCESS);
  const auto sumAt = [](std::uint32_t x, std::uint32_t y, std::uint64_t frame) {
    std::uint32_t sum = 0;
    for (std::uint64_t n = frame; n < frame + 4; ++n) sum += TestPixel(x, y, n, 12);
    return static_cast<int>(sum);
  };
  std::uint64_t frame = 1;
  while (frame < 65536 && sumAt(0, 0, frame) != sums[0]) ++frame;
  for (std::uint32_t index = 0; index < sums.size(); ++index)
    ASSERT_EQ(sums[index], sumAt(index % 64, index / 64, frame)) << index;
}

#ifdef VXMCD_TOOL
// The checks of `vxmcd check`, but for those that a machine fails that is too busy to receive every packet.
TEST_F(GenICamTest, PassesTheChecksAndKeepsItsSettings)
{
  Serve("127.0.0.1", {"increment=4"});
  const std::string file = testing::TempDir() + "checked." + std::to_string(getpid()) + ".ini";
  std::ofstream(file) << "[Backends]\nSimulator = off\n[GenICam]\nDevices = 127.0.0.1\n";
  const auto outputOf = [&file](const std::string& arguments) {
    FILE* const program = popen(("VXCORE_CONFIG='" + file + "' '" VXMCD_TOOL "' " + arguments).c_str(), "r");
    std::string text;
    char part[4096];
    while (std::fgets(part, sizeof part, program)) text += part;
    pclose(program);
    return text;
  };
  const std::string before = outputOf("get --json");
  std::istringstream lines(outputOf("check --group life,describe,settings,area,wait,core"));
  const std::string after = outputOf("get --json");
  std::filesystem::remove(file);
  std::string line;
  while (std::getline(lines, line) && line.rfind("core.short-buffer", 0) != 0) {
    EXPECT_TRUE(line.find(" ok") != std::string::npos || line.find(" skip (") != std::string::npos) << line;
  }
  std::getline(lines, line);
  EXPECT_NE(line.find(" ok, 0 failed, "), std::string::npos) << line;
  EXPECT_EQ(after, before);
}
#endif

TEST_F(GenICamRun, EndsWhenTheCameraIsGone)
{
  for (const bool isTriggered : {false, true}) {
    Open();
    SetArea({0, 0, 128, 128});
    SetEncoding(L"Mono8");
    SetRate(50);
    ASSERT_EQ(SetTriggerMode(isTriggered ? 10 : 0), RC_SUCCESS);
    ASSERT_EQ(SetAcquisitionMode(5), RC_SUCCESS);
    ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
    if (!isTriggered) {
      ASSERT_EQ(WaitForAcquisitionTimeOut(2000), RC_SUCCESS);
    }
    Kill("127.0.0.1");
    EXPECT_TRUE(WaitUntilIdle(12.0));
    EXPECT_EQ(Status(),
              isTriggered ? static_cast<int>(RC_STATUS_HARDWARE_OVERFLOW) : static_cast<int>(RC_STATUS_TIMED_OUT));
    EXPECT_LT(SecondsOf([] { ShutDown(); }), 8.0);
  }
  Open(); // the power is back
  EXPECT_EQ(Int(L"SensorWidth"), 2048);
}

TEST_F(GenICamRun, LeavesNothingBehind)
{
  const auto entriesOf = [](const char* directory) {
    return std::distance(std::filesystem::directory_iterator(directory), std::filesystem::directory_iterator());
  };
  Open();
  SetArea({0, 0, 64, 64});
  SetEncoding(L"Mono8");
  SetRate(500);
  ASSERT_EQ(SetAcquisitionMode(5), RC_SUCCESS);
  std::ptrdiff_t files = 0;
  std::ptrdiff_t threads = 0;
  for (int run = 0; run < 60; ++run) {
    ASSERT_EQ(StartAcquisition(), RC_SUCCESS) << run;
    EXPECT_EQ(WaitForAcquisitionTimeOut(2000), RC_SUCCESS);
    ASSERT_EQ(AbortAcquisition(), RC_SUCCESS);
    if (run == 9) {
      files = entriesOf("/proc/self/fd");
      threads = entriesOf("/proc/self/task");
    }
  }
  EXPECT_LE(entriesOf("/proc/self/fd"), files);
  EXPECT_LE(entriesOf("/proc/self/task"), threads);
}

TEST_F(GenICamRun, TwoCamerasAreKeptApart)
{
  Serve("127.0.0.1");
  Serve("127.0.0.2");
  Attach("127.0.0.1, 127.0.0.2");
  const TArea areas[] = {{0, 0, 128, 64}, {100, 200, 128, 64}};
  char directory[] = "";
  for (const int camera : {0, 1}) {
    ASSERT_EQ(SetCurrentCamera(101 + camera), RC_SUCCESS);
    ASSERT_EQ(Initialize(directory), RC_SUCCESS);
    SetArea(areas[camera]);
    SetEncoding(L"Mono16");
    SetRate(100);
    SetSeries(5);
    ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
    ASSERT_TRUE(WaitUntilIdle(5.0));
    for (long number = 1; number <= 5; ++number)
      EXPECT_NE(FrameOf(Image(number, areas[camera]), areas[camera], 16), 0U);
  }
  for (const int camera : {0, 1}) {
    ASSERT_EQ(SetCurrentCamera(101 + camera), RC_SUCCESS);
    EXPECT_EQ(ShutDown(), RC_SUCCESS);
  }
}

} // namespace
