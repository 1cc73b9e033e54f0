// SPDX-License-Identifier: MIT
// The simulator's configuration: what it changes, and how its mistakes are reported.
#include "tests/support/TScratchDirectory.h"
#include "tests/vxcore/SimulatedCameraTest.h"

#include <atomic>
#include <cstdlib>
#include <filesystem>

namespace {

std::atomic<bool> isPrivileged{false};

} // namespace

/// Takes the C library's place, so that a test can be a process that is privileged.
__attribute__((visibility("default"))) char* secure_getenv(const char* name) noexcept
{
  return isPrivileged ? nullptr : std::getenv(name); // NOLINT(concurrency-mt-unsafe)
}

namespace {

using SimulatorConfiguration = SimulatedCameraTest;

/// A file that is gone after the test, named by VXCORE_CONFIG meanwhile.
class ConfigurationFile final
{
public:
  explicit ConfigurationFile(const std::string& text)
  {
    setenv("VXCORE_CONFIG", directory_.File(text).c_str(), 1);
  }
  ~ConfigurationFile() { unsetenv("VXCORE_CONFIG"); }
  ConfigurationFile(const ConfigurationFile&) = delete;
  ConfigurationFile& operator=(const ConfigurationFile&) = delete;

private:
  const TScratchDirectory directory_;
};

TEST_F(SimulatorConfiguration, FeaturesAreChangedRemovedAndLimited)
{
  Configure("# comment\n[Simulator]\nCameras = 2\n"
            "[Camera0]\nModel = TRELLIS CMOS\nRemove = AccumulateCount, BurstRate\nGain = 2.5\n"
            "[Camera0.SerialNumber]\nValue = VSC-4711\n"
            "[Camera0.ExposureTime]\nMin = 0.001\nMax = 2\nValue = 0.25\n"
            "[Camera0.TriggerMode]\nTexts = Internal | Software\n"
            "[Camera0.AOILeft]\nValue = 101\n"
            "[Camera0.AOIWidth]\nValue = 200\nReadOnly = yes\n"
            "[Camera0.ReadoutTime]\nValue = 0.125\n"
            "[Camera1]\nModel = TARN 1M\n[Camera1.SensorWidth]\nValue = 640\n[Camera1.Overlap]\nRemove = on\n");
  const OpenCamera first(0);
  const OpenCamera second(1);
  int flag = -1;
  EXPECT_EQ(VX_IsImplemented(first.handle, L"BurstRate", &flag), VX_SUCCESS);
  EXPECT_EQ(flag, 0);
  EXPECT_EQ(first.String(L"SerialNumber"), L"VSC-4711");
  EXPECT_DOUBLE_EQ(first.Float(L"ExposureTime"), 0.25);
  EXPECT_EQ(first.TrySet(L"ExposureTime", 0.0005), VX_ERR_OUT_OF_RANGE);
  EXPECT_EQ(first.TrySet(L"ExposureTime", 2.5), VX_ERR_OUT_OF_RANGE);
  int count = 0;
  EXPECT_EQ(VX_GetEnumCount(first.handle, L"TriggerMode", &count), VX_SUCCESS);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(first.Int(L"AOILeft"), 101);
  EXPECT_EQ(first.Int(L"AOIWidth"), 200);
  EXPECT_EQ(first.TrySet(L"AOIWidth", 100LL), VX_ERR_NOT_WRITABLE);
  EXPECT_DOUBLE_EQ(first.Float(L"ReadoutTime"), 0.125);
  EXPECT_EQ(second.Int(L"AOIWidth"), 640);
  EXPECT_EQ(second.TrySet(L"Overlap", true), VX_ERR_NOT_IMPLEMENTED);
}

TEST_F(SimulatorConfiguration, MistakesAreRefusedWithTheirPlace)
{
  const std::pair<const char*, const char*> mistakes[] = {
      {"[Simulator]\nCameras = many\n", "line 2"},
      {"[Simulator]\nCameras = 65\n", "line 2"},
      {"[Simulator]\nColour = red\n", "[Simulator] Colour"},
      {"[Camera0]\n\nModel = NOBODY\n", "line 3, [Camera0] Model"},
      {"[Camera0]\nClock = fast\n", "'fast' is not a valid value; real or free is"},
      {"[Camera0]\nmodel = RQ512_LX\n", "unknown key"},
      {"[Camera0]\nScene = nowhere\n", "'nowhere'"},
      {"[Camera0]\nPattern = beads\n", "'beads'"},
      {"[Camera0]\nTriggerPeriod = nan\n", "'nan'"},
      {"[Camera0]\nRemove = NoSuchFeature\n", "no model has"},
      {"[Camera1]\nModel = RQ512_LX\n", "only 1 cameras"},
      {"[Cameras]\nModel = RQ512_LX\n", "unknown section"},
      {"[Camera0.Nothing]\nValue = 1\n", "feature of this name"},
      {"[Camera0.AOIWidth]\nValue = 99999\n", "AOIWidth"},
      {"[Camera0.AOIBinning]\nValue = 2x2\n", "no such feature"},
      {"[Camera0.SensorWidth]\nValue = wide\n", "SensorWidth: it cannot be wide"},
      {"[Camera0.AcquisitionStart]\nValue = 1\n", "AcquisitionStart"},
      {"[Camera0.AOIWidth]\nTexts = a | b\n", "only an enumerated"},
      {"[Camera0.TriggerMode]\nMax = 2\n", "only a number"},
      {"[Camera0\nModel = RQ512_LX\n", "line 1"},
      {"[Camera0]\nModel\n", "line 2"},
      {"[Faults]\nRule = frame 1 explode\n", "explode"},
      {"[Faults]\nRules = frame 1 drop\n", "unknown key"},
  };
  Configure("[Camera0]\nModel = RQ512_LX\n");
  for (const auto& [text, place] : mistakes) {
    EXPECT_EQ(VXSIM_Configure(text), VX_ERR_OUT_OF_RANGE) << text;
    EXPECT_NE(std::string(VXSIM_GetLastError()).find(place), std::string::npos) << VXSIM_GetLastError();
  }
  EXPECT_EQ(OpenCamera().String(L"CameraModel"), L"RQ512_LX"); // what was refused changed nothing
}

TEST_F(SimulatorConfiguration, FileIsReadAtTheFirstInitialisationAfterAReset)
{
  const ConfigurationFile file("[Simulator]\nCameras = 3\n[Faults]\nRule = call VX_Open at 1 rc 42\n");
  ASSERT_EQ(VXSIM_Reset(), VX_SUCCESS);
  ASSERT_EQ(VX_InitialiseLibrary(), VX_SUCCESS);
  long long count = 0;
  EXPECT_EQ(VX_GetInt(VX_HANDLE_SYSTEM, L"DeviceCount", &count), VX_SUCCESS);
  EXPECT_EQ(count, 3);
  int handle = -1;
  EXPECT_EQ(VX_Open(0, &handle), 42);
  EXPECT_EQ(VX_Open(0, &handle), VX_SUCCESS);
}

TEST_F(SimulatorConfiguration, BadFileMakesInitialisationFail)
{
  {
    const ConfigurationFile file("[Camera0]\nClock = fast\n");
    ASSERT_EQ(VXSIM_Reset(), VX_SUCCESS);
    testing::internal::CaptureStderr();
    EXPECT_EQ(VX_InitialiseLibrary(), VX_ERR_CONFIGURATION);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("[Camera0] Clock"), std::string::npos);
    EXPECT_EQ(VXSIM_GetInitialiseCount(), 0);
  }
  const TScratchDirectory directory;
  const std::string large = directory.File("");
  std::filesystem::resize_file(large, 16 * 1024 * 1024 + 1);
  const std::pair<std::string, const char*> places[] = {{directory.Missing(), "cannot be opened"},
                                                        {directory.Fifo(), "is not a regular file"},
                                                        {directory.Directory(), "is not a regular file"},
                                                        {"/dev/zero", "is not a regular file"},
                                                        {"/proc/self/mem", "cannot be read"},
                                                        {large, "is larger than"}};
  for (const auto& [path, message] : places) {
    setenv("VXCORE_CONFIG", path.c_str(), 1);
    testing::internal::CaptureStderr();
    EXPECT_EQ(VX_InitialiseLibrary(), VX_ERR_CONFIGURATION);
    EXPECT_NE(testing::internal::GetCapturedStderr().find(path + ": " + message), std::string::npos) << message;
  }
  isPrivileged = true;
  EXPECT_EQ(VX_InitialiseLibrary(), VX_SUCCESS); // looked at no file
  isPrivileged = false;
  unsetenv("VXCORE_CONFIG");
}

TEST_F(SimulatorConfiguration, WiderLimitsNeverLeadBeyondTheCamera)
{
  std::string text = "[Camera0]\nModel = TRELLIS CMOS\nClock = free\nScene = dark\n";
  const std::vector<std::wstring> features = {L"AOIHBin",
                                              L"AOIVBin",
                                              L"AOICount",
                                              L"AOISelector",
                                              L"RegisterCount",
                                              L"RegisterIndex",
                                              L"InternalI2CByteCount",
                                              L"AOITop",
                                              L"AccumulateCount",
                                              L"InternalI2CByteSelector"};
  for (const std::wstring& feature : features)
    text += "[Camera0." + std::string(feature.begin(), feature.end()) + "]\nMin = -1000000\nMax = 1e15\n";
  Configure(text);
  for (const wchar_t* layout : {L"Image", L"Track"}) {
    for (const std::wstring& feature : features) {
      for (const long long value : {-7LL, 0LL, 3LL, 5000LL, 20000LL, 1'000'000'000'000LL}) {
        OpenCamera camera;
        camera.Set(L"AOILayout", layout);
        camera.TrySet(feature.c_str(), value);
        for (const wchar_t* reading : {L"RegisterValue", L"InternalI2CByte", L"AOITop"}) {
          long long number = 0;
          const int code = VX_GetInt(camera.handle, reading, &number);
          EXPECT_TRUE(code == VX_SUCCESS || code == VX_ERR_NOT_AVAILABLE) << reading << code;
        }
        EXPECT_GT(camera.Float(L"ReadoutTime"), 0.0);
        const int code = camera.Command(L"AcquisitionStart");
        EXPECT_TRUE(code == VX_SUCCESS || code == VX_ERR_START_REFUSED) << code;
      }
    }
  }
}

} // namespace
