// SPDX-License-Identifier: MIT
// The features of the simulated cameras: kinds, limits, and what depends on what.
#include "tests/vxcore/SimulatedCameraTest.h"

#include <cmath>

namespace {

constexpr const char* kTrellis = "[Camera0]\nModel = TRELLIS CMOS\nClock = free\nScene = stamp\n";

using SimulatorFeatures = SimulatedCameraTest;

TEST_F(SimulatorFeatures, CallsWithoutACameraOrWithBadArgumentsAreRefused)
{
  ASSERT_EQ(VXSIM_Reset(), VX_SUCCESS);
  int handle = -1;
  long long value = 0;
  EXPECT_EQ(VX_Open(0, &handle), VX_ERR_NOT_INITIALISED);
  EXPECT_EQ(VX_GetInt(VX_HANDLE_SYSTEM, L"DeviceCount", &value), VX_ERR_NOT_INITIALISED);
  EXPECT_EQ(VX_GetInt(64, L"AOIWidth", &value), VX_ERR_NOT_INITIALISED);
  EXPECT_EQ(VX_FinaliseLibrary(), VX_ERR_NOT_INITIALISED);

  Configure(kTrellis);
  EXPECT_EQ(VX_Open(0, nullptr), VX_ERR_NULL_ARGUMENT);
  ASSERT_EQ(VX_Open(0, &handle), VX_SUCCESS);
  int second = -1;
  EXPECT_EQ(VX_Open(0, &second), VX_ERR_DEVICE_IN_USE);
  EXPECT_EQ(VX_GetInt(handle, nullptr, &value), VX_ERR_NULL_ARGUMENT);
  EXPECT_EQ(VX_GetInt(handle, L"AOIWidth", nullptr), VX_ERR_NULL_ARGUMENT);
  EXPECT_EQ(VX_GetInt(handle, L"aoiwidth", &value), VX_ERR_NOT_IMPLEMENTED);
  EXPECT_EQ(VX_SetEnumString(handle, L"TriggerMode", nullptr), VX_ERR_NULL_ARGUMENT);
  EXPECT_EQ(VX_SetBool(handle, L"Overlap", 2), VX_ERR_OUT_OF_RANGE);
  ASSERT_EQ(VX_Close(handle), VX_SUCCESS);
  ASSERT_EQ(VX_Open(0, &second), VX_SUCCESS);
  EXPECT_NE(handle, second);
  EXPECT_EQ(VX_GetInt(handle, L"AOIWidth", &value), VX_ERR_INVALID_HANDLE);
  EXPECT_EQ(VX_Close(handle), VX_ERR_INVALID_HANDLE);
  for (const int bad : {-1, 0, 1, INT32_MIN, INT32_MAX}) EXPECT_EQ(VX_Flush(bad), VX_ERR_INVALID_HANDLE) << bad;
}

TEST_F(SimulatorFeatures, TextsFitTheirBufferOrAreRefused)
{
  Configure(std::string(kTrellis) + "[Camera0.SerialNumber]\nValue = VSC-77\n");
  const OpenCamera camera;
  wchar_t text[7] = L"??????";
  EXPECT_EQ(VX_GetString(camera.handle, L"SerialNumber", text, 6), VX_ERR_TEXT_TOO_LONG);
  EXPECT_EQ(std::wstring(text), L"??????");
  EXPECT_EQ(VX_GetString(camera.handle, L"SerialNumber", text, 7), VX_SUCCESS);
  EXPECT_EQ(std::wstring(text), L"VSC-77");
  EXPECT_EQ(VX_GetEnumeratedString(camera.handle, L"AOILayout", 0, text, 5), VX_ERR_TEXT_TOO_LONG);
  EXPECT_EQ(VX_GetEnumeratedString(camera.handle, L"AOILayout", 0, text, 0), VX_ERR_TEXT_TOO_LONG);
  EXPECT_EQ(VX_GetEnumStringByIndex(camera.handle, L"AOILayout", 0, text, 6), VX_SUCCESS);
  EXPECT_EQ(std::wstring(text), L"Image");
  EXPECT_EQ(VX_GetEnumStringByIndex(camera.handle, L"AOILayout", 2, text, 7), VX_ERR_INDEX_NOT_IMPLEMENTED);
}

TEST_F(SimulatorFeatures, AreaStaysOnTheSensorWhateverTheOrderOfWrites)
{
  Configure(kTrellis);
  const OpenCamera camera;
  camera.Set(L"AOIWidth", 100LL);
  EXPECT_EQ(camera.IntMax(L"AOILeft"), 2048 - 100 + 1);
  camera.Set(L"AOILeft", 1949LL);
  EXPECT_EQ(camera.TrySet(L"AOILeft", 1950LL), VX_ERR_OUT_OF_RANGE);
  camera.Set(L"AOIHBin", 1LL);
  EXPECT_EQ(camera.Int(L"AOILeft"), 1949); // an area at the edge stays there
  EXPECT_EQ(camera.TrySet(L"AOILeft", 0LL), VX_ERR_OUT_OF_RANGE);
  camera.Set(L"AOIWidth", 2048LL); // the area moves to the left to fit
  EXPECT_EQ(camera.Int(L"AOILeft"), 1);
  camera.Set(L"AOIHBin", 2LL);
  EXPECT_EQ(camera.Int(L"AOIWidth"), 1024);
  EXPECT_EQ(camera.TrySet(L"AOIWidth", 1025LL), VX_ERR_OUT_OF_RANGE);
  camera.Set(L"AOIWidth", 512LL);
  EXPECT_EQ(camera.IntMax(L"AOILeft"), 1025);
  EXPECT_EQ(camera.TrySet(L"AOIHBin", 65LL), VX_ERR_OUT_OF_RANGE);
  EXPECT_EQ(camera.IntMax(L"AOIHBinInternal"), 64);
  camera.Set(L"AOIVBin", 4LL);
  camera.SetArea(512, 512);
  EXPECT_EQ(camera.Int(L"ImageSizeBytes"), 512 * 512 * 2);
  camera.Set(L"MetadataEnable", true);
  EXPECT_EQ(camera.Int(L"ImageSizeBytes"),
            512 * 512 * 2 + static_cast<long long>(vxsim::TMetadataWriter::TailBytes()));
}

TEST_F(SimulatorFeatures, TracksAreStripsOfOneBinnedRowEach)
{
  Configure(kTrellis);
  const OpenCamera camera;
  EXPECT_EQ(camera.TrySet(L"AOICount", 2LL), VX_ERR_NOT_AVAILABLE);
  camera.Set(L"AOILayout", L"Track");
  camera.Set(L"AOICount", 2LL);
  EXPECT_EQ(camera.TrySet(L"AOISelector", 3LL), VX_ERR_OUT_OF_RANGE);
  camera.Set(L"AOISelector", 1LL);
  camera.Set(L"AOITop", 71LL);
  camera.Set(L"AOIVBin", 11LL);
  camera.Set(L"AOISelector", 2LL);
  camera.Set(L"AOITop", 2040LL);
  EXPECT_EQ(camera.TrySet(L"AOIVBin", 10LL), VX_ERR_OUT_OF_RANGE);
  camera.Set(L"AOIVBin", 9LL);
  EXPECT_EQ(camera.Int(L"AOIHeight"), 2);
  EXPECT_EQ(camera.TrySet(L"AOIHeight", 5LL), VX_ERR_NOT_WRITABLE);
  EXPECT_EQ(camera.Int(L"ImageSizeBytes"), 2 * 2048 * 2);
  camera.Set(L"AOISelector", 1LL);
  EXPECT_EQ(camera.Int(L"AOITop"), 71);
  camera.Set(L"AOIHBin", 4LL);
  camera.Set(L"AOILayout", L"Image"); // the image's own area is untouched
  EXPECT_EQ(camera.Int(L"AOIWidth"), 2048);
  EXPECT_EQ(camera.Int(L"AOITop"), 1);
  EXPECT_EQ(camera.Int(L"AOIHeight"), 2048);
}

TEST_F(SimulatorFeatures, GainDecidesBitDepthAndEncodings)
{
  Configure(kTrellis);
  const OpenCamera camera;
  EXPECT_EQ(camera.Enum(L"BitDepth"), L"16 Bit");
  int flag = -1;
  EXPECT_EQ(VX_IsEnumeratedIndexAvailable(camera.handle, L"PixelEncoding", 0, &flag), VX_SUCCESS);
  EXPECT_EQ(flag, 0);
  EXPECT_EQ(VX_IsEnumIndexImplemented(camera.handle, L"PixelEncoding", 0, &flag), VX_SUCCESS);
  EXPECT_EQ(flag, 1);
  EXPECT_EQ(camera.TrySet(L"PixelEncoding", L"Mono12"), VX_ERR_INDEX_NOT_AVAILABLE);
  camera.Set(L"PreAmpGainChannel", L"High");
  EXPECT_EQ(camera.Enum(L"SimplePreAmpGainControl"), L"Gain 2 (11-bit)");
  EXPECT_EQ(camera.Enum(L"BitDepth"), L"11 Bit");
  camera.Set(L"PixelEncoding", L"Mono12Packed");
  EXPECT_EQ(VX_SetEnumIndex(camera.handle, L"SimplePreAmpGainControl", 2), VX_SUCCESS);
  EXPECT_EQ(camera.Enum(L"PreAmpGainChannel"), L"Both");
  EXPECT_EQ(camera.Enum(L"PixelEncoding"), L"Mono16");
  EXPECT_EQ(VX_SetEnumerated(camera.handle, L"BitDepth", 0), VX_ERR_NOT_WRITABLE);
  EXPECT_EQ(VX_SetEnumerated(camera.handle, L"CycleMode", 2), VX_ERR_INDEX_NOT_IMPLEMENTED);
}

TEST_F(SimulatorFeatures, FrameRateFollowsFromExposureReadoutAndOverlap)
{
  Configure(kTrellis);
  const OpenCamera camera;
  const double readout = camera.Float(L"ReadoutTime");
  EXPECT_NEAR(readout, 1024 * 2592.0 / 280e6, 1e-9);
  camera.Set(L"ExposureTime", 0.005);
  EXPECT_NEAR(camera.FloatMax(L"FrameRate"), 1.0 / (0.005 + readout), 1e-6);
  camera.Set(L"Overlap", true);
  EXPECT_NEAR(camera.FloatMax(L"FrameRate"), 1.0 / readout, 1e-6);
  camera.Set(L"AOIHeight", 1024LL); // read out in less than the exposure
  EXPECT_NEAR(camera.FloatMax(L"FrameRate"), 1.0 / 0.005, 1e-6);
  camera.Set(L"FrameRate", 50.0);
  EXPECT_DOUBLE_EQ(camera.Float(L"FrameRate"), 50.0);
  camera.Set(L"ExposureTime", 0.1); // the wanted rate waits until it is possible again
  EXPECT_NEAR(camera.Float(L"FrameRate"), 10.0, 1e-9);
  camera.Set(L"ExposureTime", 0.005);
  EXPECT_DOUBLE_EQ(camera.Float(L"FrameRate"), 50.0);
  for (const double bad : {0.0, -1.0, 1e9, std::nan(""), static_cast<double>(INFINITY)}) {
    EXPECT_EQ(camera.TrySet(L"FrameRate", bad), VX_ERR_OUT_OF_RANGE) << bad;
  }
  camera.Set(L"ElectronicShutteringMode", L"Global"); // cannot use the highest rate
  EXPECT_EQ(camera.Enum(L"PixelReadoutRate"), L"200 MHz");
  EXPECT_EQ(camera.TrySet(L"PixelReadoutRate", L"280 MHz"), VX_ERR_INDEX_NOT_AVAILABLE);
}

TEST_F(SimulatorFeatures, SettingsAreLockedWhileAcquiring)
{
  Configure(std::string("[Simulator]\nCameras = 2\n") + kTrellis + "[Camera1]\nModel = TARN 1M\nClock = free\n");
  OpenCamera trellis(0);
  OpenCamera tarn(1);
  trellis.Start();
  tarn.Start();
  EXPECT_TRUE(trellis.Bool(L"CameraAcquiring"));
  EXPECT_EQ(trellis.TrySet(L"AOIWidth", 100LL), VX_ERR_NOT_WRITABLE);
  EXPECT_EQ(trellis.TrySet(L"MetadataEnable", true), VX_ERR_NOT_WRITABLE);
  EXPECT_TRUE(trellis.IsWritable(L"ExposureTime"));
  EXPECT_EQ(trellis.TrySet(L"ExposureTime", 0.02), VX_SUCCESS);
  EXPECT_EQ(tarn.TrySet(L"ExposureTime", 0.02), VX_ERR_NOT_WRITABLE);
  EXPECT_EQ(trellis.Command(L"AcquisitionStart"), VX_ERR_START_REFUSED);
  trellis.Stop();
  EXPECT_EQ(trellis.TrySet(L"AOIWidth", 100LL), VX_SUCCESS);
  EXPECT_EQ(trellis.Command(L"AcquisitionStop"), VX_SUCCESS); // nothing to stop is no error
}

} // namespace
