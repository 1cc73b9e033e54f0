// SPDX-License-Identifier: MIT
// Opening, describing and setting a real camera through the flat interface.
#include "tests/genicam/GenICamTest.h"

#include <atomic>
#include <fstream>
#include <sys/wait.h>
#include <unistd.h>

namespace {

class GenICamCamera : public GenICamTest
{
};

std::string FeatureSources()
{
  std::wstring text(65536, L'\0');
  EXPECT_EQ(VX_GetString(Handle(), L"FeatureSources", text.data(), static_cast<int>(text.size())), VX_SUCCESS);
  std::string narrow;
  for (const wchar_t letter : text.substr(0, text.find(L'\0'))) narrow += static_cast<char>(letter);
  return narrow;
}

TEST_F(GenICamCamera, TellsWhatItIs)
{
  Open({"version=26.11.21.7.8.9-rc1"});
  long cameras = 0;
  EXPECT_EQ(GetAvailableCameras(&cameras), RC_SUCCESS);
  EXPECT_EQ(cameras, 1);
  char name[4096];
  EXPECT_EQ(GetHeadModel(name), RC_SUCCESS);
  EXPECT_STREQ(name, "Fake");
  int serial = 0;
  EXPECT_EQ(GetCameraSerialNumber(&serial), RC_SUCCESS);
  EXPECT_EQ(serial, 1);
  unsigned int out[6];
  EXPECT_EQ(GetHardwareVersion(&out[0], &out[1], &out[2], &out[3], &out[4], &out[5]), RC_SUCCESS);
  EXPECT_EQ(out[4], 20261121U);
  EXPECT_EQ(out[5], 7U);
  int width = 0;
  int height = 0;
  EXPECT_EQ(GetDetector(&width, &height), RC_SUCCESS);
  EXPECT_EQ(width, 2048);
  EXPECT_EQ(height, 2048);
  EXPECT_EQ(Int(L"AOIWidth"), 2048); // an opened camera shows its whole sensor
  float across = 0.0F;
  float down = 0.0F;
  EXPECT_EQ(GetPixelSize(&across, &down), RC_SUCCESS);
  EXPECT_FLOAT_EQ(across, 6.0F);
  float celsius = 0.0F;
  EXPECT_EQ(GetTemperatureF(&celsius), RC_SUCCESS); // no cooler, so there is no state of cooling
  EXPECT_FLOAT_EQ(celsius, 25.0F);
}

TEST_F(GenICamCamera, ThatIsNotThereLeavesTheOthersUsable)
{
  for (const char* address : {"127.0.0.1", "127.0.0.2"}) Serve(address);
  Attach("127.0.0.3, 127.0.0.1, 127.0.0.2");
  std::atomic<int> opened{0};
  std::vector<std::thread> threads;
  for (const long handle : {102L, 103L})
    threads.emplace_back([handle, &opened] {
      EXPECT_EQ(vxmcd_SetCurrentCameraOfThread(handle, nullptr), RC_SUCCESS);
      EXPECT_EQ(Initialize(nullptr), RC_SUCCESS);
      EXPECT_EQ(Int(L"SensorWidth"), 2048);
      ++opened;
      EXPECT_EQ(ShutDown(), RC_SUCCESS);
    });
  unsigned int code = RC_SUCCESS;
  EXPECT_LT(SecondsOf([&] { code = Initialize(nullptr); }), 4.0);
  EXPECT_EQ(code, static_cast<unsigned int>(RC_NO_CAMERA));
  EXPECT_EQ(opened, 2) << "meanwhile";
  for (std::thread& thread : threads) thread.join();
}

TEST_F(GenICamCamera, OfAnotherProgramIsInUse)
{
  int pipes[2];
  ASSERT_EQ(pipe(pipes), 0);
  const pid_t other = fork(); // before this process has a camera, which the child would close
  if (other == 0) {
    char go = 0;
    int handle = 0;
    Attach("127.0.0.1");
    const bool isReady = read(pipes[0], &go, 1) == 1 && VX_InitialiseLibrary() == VX_SUCCESS;
    _exit(isReady ? VX_Open(0, &handle) : 1);
  }
  Open();
  EXPECT_EQ(write(pipes[1], "g", 1), 1);
  int status = 0;
  waitpid(other, &status, 0);
  EXPECT_EQ(WEXITSTATUS(status), VX_ERR_DEVICE_IN_USE);
  for (const int one : pipes) close(one);
}

TEST_F(GenICamCamera, ConfigurationErrorsNameTheLine)
{
  const auto errorOf = [](const std::string& lines) {
    return VXSIM_Configure(("[GenICam]\n" + lines).c_str()) == VX_SUCCESS ? "" : std::string(VXSIM_GetLastError());
  };
  EXPECT_EQ(errorOf("Devices = Fake_1\nPool = 1\n"),
            "line 3, [GenICam] Pool: '1' is not a valid value; a number of frames from 2 to 4096 is");
  EXPECT_EQ(errorOf("Device = Fake_1\n"), "line 2, [GenICam] Device: unknown key");
  EXPECT_EQ(errorOf("Devices = discover, Fake_1, discover\n"),
            "line 2, [GenICam] Devices: 'discover' is there twice");
  std::string many = "Fake_0";
  for (int index = 1; index < 64; ++index) many += ", Fake_" + std::to_string(index); // beside a simulated one
  EXPECT_EQ(errorOf("Devices = " + many + "\n"), "there are 65 cameras, and room for 64");
  EXPECT_NE(errorOf("Map = /nowhere/map\n").find("/nowhere/map: cannot be opened"), std::string::npos);
}

TEST_F(GenICamCamera, ImageAreaIsSetInEveryOrder)
{
  Open({"increment=8"});
  for (const int bin : {1, 2})
    for (const TArea& area :
         {TArea{4, 8, 512, 512}, {1536, 1536, 512, 512}, {0, 0, 2048, 2048}, {11, 21, 333, 100}}) {
      const unsigned int code =
          SetImage(bin, bin, area.left + 1, area.left + area.width, area.top + 1, area.top + area.height);
      EXPECT_EQ(code, RC_SUCCESS) << bin << " " << area.left << " " << area.width;
      EXPECT_EQ(Int(L"AOIWidth"), area.width / bin);
      EXPECT_EQ(Int(L"AOILeft"), area.left + 1);
      EXPECT_EQ(Int(L"AOITop"), area.top + 1);
    }
  EXPECT_EQ(SetImage(1, 1, 0, 511, 1, 512), static_cast<unsigned int>(RC_P3_INVALID));
  EXPECT_EQ(SetImage(1, 1, 1, 5000, 1, 512), static_cast<unsigned int>(RC_P4_INVALID));
  EXPECT_EQ(SetImage(1, 1, 1, 512, 2047, 5000), static_cast<unsigned int>(RC_P6_INVALID));
  EXPECT_EQ(VX_SetInt(Handle(), L"AOIHBin", 5), VX_ERR_OUT_OF_RANGE);
  int most = 0;
  EXPECT_EQ(GetMaximumBinning(4, 0, &most), 0U);
  EXPECT_EQ(most, 4);
}

TEST_F(GenICamCamera, TimesReachTheCameraInItsUnits)
{
  Open();
  EXPECT_EQ(SetExposureTime(0.0025F), RC_SUCCESS);
  EXPECT_NEAR(Float(L"ExposureTime"), 0.0025, 1e-9);
  EXPECT_EQ(SetExposureTime(0.0F), RC_SUCCESS);
  EXPECT_EQ(Float(L"ExposureTime"), 1e-5); // as exact as 10 us
  EXPECT_EQ(SetExposureTime(20.0F), static_cast<unsigned int>(RC_P1_INVALID));
  float seconds = 0.0F;
  EXPECT_EQ(GetMaximumExposure(&seconds), RC_SUCCESS);
  EXPECT_FLOAT_EQ(seconds, 10.0F);
  EXPECT_EQ(SetKineticCycleTime(0.02F), RC_SUCCESS);
  EXPECT_EQ(SetExposureTime(0.0025F), RC_SUCCESS);
  float exposure = 0.0F;
  float accumulate = 0.0F;
  float kinetic = 0.0F;
  EXPECT_EQ(GetAcquisitionTimings(&exposure, &accumulate, &kinetic), RC_SUCCESS);
  EXPECT_FLOAT_EQ(exposure, 0.0025F);
  EXPECT_EQ(accumulate, 0.02F); // in whole microseconds, of which one less would be wrong
  EXPECT_EQ(kinetic, 0.02F);
  EXPECT_EQ(GetReadOutTime(&seconds), RC_SUCCESS);
  EXPECT_FLOAT_EQ(seconds, 0.005F);
}

TEST_F(GenICamCamera, TriggerModesAreThoseThatItCanDo)
{
  Open({"without=ExposureMode"}, "Line = Line1\n");
  for (const int mode : {0, 1, 6, 10}) EXPECT_EQ(SetTriggerMode(mode), RC_SUCCESS) << mode;
  EXPECT_EQ(SetTriggerMode(7), static_cast<unsigned int>(RC_INVALID_TRIGGER_MODE));
  EXPECT_EQ(SetTriggerMode(2), static_cast<unsigned int>(RC_P1_INVALID));
  EXPECT_EQ(VX_Command(Handle(), L"SoftwareTrigger"), VX_ERR_NOT_WRITABLE); // no run
}

TEST_F(GenICamCamera, CoolingComesWithAMapFile)
{
  const std::string map = testing::TempDir() + "genicam_test.map";
  std::ofstream(map)
      << "; a cooled camera\nSensorCooling = VendorCooler\nTargetSensorTemperature = VendorTarget, 0.1, -50\n"
         "FanSpeed = VendorFan\nReadoutTime = DeviceModelName\nBaselineLevel = BlackLevel, 1e308\n";
  Open({"without=Gain,AcquisitionFrameRate"}, "Map = " + map + "\n");
  for (const char* line :
       {"\nTargetSensorTemperature\tmap file\tVendorTarget\tVendorTarget\t0.1\t-50\n", // from the map file
        "\nExposureTime\tderived\tExposureTime\tExposureTime,ExposureTimeAbs,ExposureTimeRaw\t1e-06\t0\n",
        "\nPreAmpGain\toptional\t\tGain\t1\t0\n",                                        // not there
        "\nFrameRate\temulated\t\tAcquisitionFrameRate,AcquisitionFrameRateAbs\t1\t0\n", // made of others
        "\nTriggerMode\temulated\t\t\t1\t0\n"})
    EXPECT_NE(FeatureSources().find(line), std::string::npos) << line << FeatureSources();
  EXPECT_FALSE(IsImplemented(L"ReadoutTime")); // of another kind
  long long level = 0;
  EXPECT_EQ(VX_GetInt(Handle(), L"BaselineLevel", &level), VX_ERR_NOT_AVAILABLE); // beyond all numbers
  int lowest = 0;
  int highest = 0;
  EXPECT_EQ(GetTemperatureRange(&lowest, &highest), RC_SUCCESS);
  EXPECT_EQ(lowest, -50);
  EXPECT_EQ(highest, 50);
  EXPECT_EQ(SetTemperature(-20), RC_SUCCESS);
  EXPECT_NEAR(Float(L"TargetSensorTemperature"), -20.0, 1e-9);
  EXPECT_EQ(CoolerON(), RC_SUCCESS);
  int on = 0;
  EXPECT_EQ(IsCoolerOn(&on), RC_SUCCESS);
  EXPECT_EQ(on, 1);
  float celsius = 0.0F;
  EXPECT_EQ(GetTemperatureF(&celsius), static_cast<unsigned int>(RC_TEMP_NOT_REACHED));
  EXPECT_EQ(SetTemperature(25), RC_SUCCESS);
  EXPECT_EQ(GetTemperatureF(&celsius), static_cast<unsigned int>(RC_TEMP_NOT_STABILIZED));
  EXPECT_EQ(CoolerOFF(), RC_SUCCESS);
  EXPECT_EQ(GetTemperatureF(&celsius), static_cast<unsigned int>(RC_TEMP_OFF));
  for (const int mode : {0, 1, 2})
    EXPECT_EQ(SetFanMode(mode), RC_SUCCESS) << mode; // its word for the first is "Full"
  std::ofstream(map) << "SensorColing = VendorCooler\n";
  EXPECT_NE(VXSIM_Configure(("[GenICam]\nDevices = 127.0.0.1\nMap = " + map + "\n").c_str()), VX_SUCCESS);
  EXPECT_NE(std::string(VXSIM_GetLastError()).find("line 1, SensorColing: no feature"), std::string::npos);
  std::remove(map.c_str());
}

/// Which features are there on a camera that has everything, on one that has little, and on the one of Aravis.
TEST_F(GenICamCamera, HasTheFeaturesOfItsDescription)
{
  const std::vector<const wchar_t*> always = {L"CameraModel",
                                              L"HardwareType",
                                              L"SerialNumber",
                                              L"FirmwareVersion",
                                              L"SensorWidth",
                                              L"SensorHeight",
                                              L"AOILayout",
                                              L"AOIWidth",
                                              L"AOIHeight",
                                              L"AOILeft",
                                              L"AOITop",
                                              L"AOIStride",
                                              L"PixelEncoding",
                                              L"ImageSizeBytes",
                                              L"ExposureTime",
                                              L"FrameRate",
                                              L"AccumulateCount",
                                              L"FrameCount",
                                              L"CycleMode",
                                              L"TriggerMode",
                                              L"MetadataEnable",
                                              L"TimestampClockReset",
                                              L"TimestampClockFrequency",
                                              L"AcquisitionStart",
                                              L"AcquisitionStop",
                                              L"CameraAcquiring",
                                              L"PixelReadoutRate",
                                              L"PreAmpGainChannel",
                                              L"PreAmpGainSelector",
                                              L"BitDepth"};
  const std::vector<const wchar_t*> never = {L"DDR2Type",
                                             L"AOICount",
                                             L"AOISelector",
                                             L"BurstRate",
                                             L"TriggerConfiguration",
                                             L"ExposureStartEvent",
                                             L"ExposureEndEvent",
                                             L"SensorCooling",
                                             L"TargetSensorTemperature",
                                             L"FanSpeed",
                                             L"TemperatureStatus",
                                             L"SimplePreAmpGainControl",
                                             L"BaselineClamp",
                                             L"ControllerI2CRead",
                                             L"RegisterRead"};
  const std::vector<const wchar_t*> optional = {
      L"PixelWidth",      L"AOIHBin", L"AOIVBinInternal",   L"AOIBinning", L"ReadoutTime",
      L"SoftwareTrigger", L"Overlap", L"SensorTemperature", L"PreAmpGain", L"ElectronicShutteringMode",
      L"BaselineLevel"};
  const auto check = [&](const std::vector<bool>& has) {
    for (const wchar_t* feature : always) EXPECT_TRUE(IsImplemented(feature)) << feature;
    for (const wchar_t* feature : never) EXPECT_FALSE(IsImplemented(feature)) << feature;
    for (std::size_t index = 0; index < optional.size(); ++index)
      EXPECT_EQ(IsImplemented(optional[index]), has[index]) << optional[index];
    ShutDown();
  };
  Open();
  check(std::vector<bool>(optional.size(), true));
  Kill("127.0.0.1");
  Open({"without=SensorPixelWidth,SensorPixelHeight,BinningHorizontal,BinningVertical,SensorReadoutTime,"
        "TriggerSoftware,"
        "TriggerOverlap,DeviceTemperature,Gain,SensorShutterMode,BlackLevel,AcquisitionFrameRate,OffsetX,OffsetY,"
        "TriggerMode,TimestampLatch"});
  EXPECT_NEAR(Float(L"FrameRate"), 100.0, 1e-6); // what an exposure of 10 ms allows
  check(std::vector<bool>(optional.size(), false));
  Attach("Fake_1");
  char directory[] = "";
  ASSERT_EQ(Initialize(directory), RC_SUCCESS);
  check({false, true, true, true, false, true, false, false, false, false, false});
}

} // namespace
