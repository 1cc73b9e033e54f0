// SPDX-License-Identifier: MIT
// What the camera reports about itself.
#include "tests/support/SimulatedCameraTest.h"

#include <climits>
#include <cstring>

namespace {

constexpr const char* kThreeModels = "[Simulator]\nCameras=3\n[Camera0]\nModel=TRELLIS CMOS\nSource=manual\n"
                                     "[Camera1]\nModel=TARN 1M\nSource=manual\n"
                                     "[Camera2]\nModel=RQ512_LX\nSource=manual\n"
                                     "Remove=PixelWidth,TriggerMode,FrameCount,Overlap,AOILeft,AOIHBin,PreAmpGain,"
                                     "PixelReadoutRate,BaselineClamp,MetadataEnable\n";

class Description : public SimulatedCameraTest
{
protected:
  Description() : SimulatedCameraTest(kThreeModels) {}

  static vxmcd_Capabilities Capabilities(unsigned int size = sizeof(vxmcd_Capabilities))
  {
    vxmcd_Capabilities capabilities;
    std::memset(&capabilities, 0xEE, sizeof capabilities);
    capabilities.size = size;
    EXPECT_EQ(GetCapabilities(&capabilities), RC_SUCCESS);
    EXPECT_EQ(capabilities.size, size);
    return capabilities;
  }

  /// Firmware date and build when the camera reports @p text.
  static std::pair<unsigned int, unsigned int> Firmware(const std::string& text)
  {
    VXSIM_ClearFaults();
    EXPECT_EQ(VXSIM_AddFault(("value FirmwareVersion set " + text).c_str()), VX_SUCCESS) << VXSIM_GetLastError();
    unsigned int v[6] = {9, 9, 9, 9, 9, 9};
    EXPECT_EQ(GetHardwareVersion(&v[0], &v[1], &v[2], &v[3], &v[4], &v[5]), RC_SUCCESS);
    EXPECT_EQ(v[0] + v[1] + v[2] + v[3], 0u);
    return {v[4], v[5]};
  }

  static int SerialNumber(const std::string& text)
  {
    VXSIM_ClearFaults();
    EXPECT_EQ(VXSIM_AddFault(("value SerialNumber set " + text).c_str()), VX_SUCCESS) << VXSIM_GetLastError();
    int number = 77;
    EXPECT_EQ(GetCameraSerialNumber(&number), RC_SUCCESS);
    return number;
  }
};

constexpr unsigned int kUntouched = 0xEEEEEEEEu;

TEST_F(Description, CapabilitiesAreTheFeaturesOfTheModel)
{
  OpenCamera(101);
  vxmcd_Capabilities c = Capabilities();
  EXPECT_EQ(c.acquisitionModes, 73u);
  EXPECT_EQ(c.readModes, 35u);
  EXPECT_EQ(c.triggerModes, 59u);
  EXPECT_EQ(c.cameraType, 19u);
  EXPECT_EQ(c.pixelMode, 4u);
  EXPECT_EQ(c.settableFunctions & ~4u, 0x1005022u);
  EXPECT_EQ(c.readableFunctions & ~1u, 8u);
  EXPECT_EQ(c.features & ~0x180u, 0x6008003u);
  EXPECT_EQ(c.reserved1 + c.reserved2 + c.reserved3, 0u);

  OpenCamera(102);
  c = Capabilities();
  EXPECT_EQ(c.triggerModes, 59u) << "external is the level transition here";
  EXPECT_EQ(c.cameraType, 22u);
  EXPECT_EQ(c.settableFunctions & ~4u, 0x1005222u) << "binning in squares counts";

  OpenCamera(103);
  c = Capabilities();
  EXPECT_EQ(c.acquisitionModes, 1u);
  EXPECT_EQ(c.readModes, 1u);
  EXPECT_EQ(c.triggerModes, 1u) << "a camera without triggers";
  EXPECT_EQ(c.cameraType, 21u);
  EXPECT_EQ(c.settableFunctions & ~4u, 0x1000000u);
  EXPECT_EQ(c.features & ~0x180u, 3u);
  VXSIM_AddFault("call VX_GetString any rc 53");
  EXPECT_EQ(Capabilities().cameraType, 20u);
}

TEST_F(Description, CapabilitiesFillOnlyWhatTheSizeCovers)
{
  OpenCamera(101);
  EXPECT_EQ(Capabilities(7).acquisitionModes, kUntouched);
  VXSIM_StartCallLog(1);
  const vxmcd_Capabilities c = Capabilities(8);
  EXPECT_EQ(LoggedCalls().size(), 2u) << "nothing more is asked";
  EXPECT_EQ(c.acquisitionModes, 73u);
  EXPECT_EQ(c.readModes, kUntouched);
  EXPECT_EQ(Capabilities(47).reserved3, kUntouched);
  EXPECT_EQ(Capabilities(UINT_MAX).reserved3, 0u);
  EXPECT_EQ(GetCapabilities(nullptr), RC_P1_INVALID);
  ShutDown();
  vxmcd_Capabilities closed = {};
  closed.size = sizeof closed;
  EXPECT_EQ(GetCapabilities(nullptr), RC_P1_INVALID) << "before the camera";
  EXPECT_EQ(GetCapabilities(&closed), RC_NOT_INITIALIZED);
}

TEST_F(Description, TextsThatCannotBeReadAreLeftOut)
{
  OpenCamera(101);
  VXSIM_AddFault("call VX_GetEnumeratedString feature TriggerMode at 2 rc 53");
  EXPECT_EQ(Capabilities().triggerModes, 59u - 8u);
  VXSIM_ClearFaults();
  VXSIM_AddFault("call VX_GetEnumeratedString feature TriggerMode any unterminated");
  EXPECT_EQ(Capabilities().triggerModes, 0u);
  VXSIM_ClearFaults();
  VXSIM_AddFault("call VX_GetEnumeratedCount feature TriggerMode any out 2147483647");
  EXPECT_EQ(Capabilities().triggerModes, 59u) << "and a senseless count ends soon";
}

TEST_F(Description, FirmwareIsADateAndABuild)
{
  OpenCamera(101);
  using TPair = std::pair<unsigned int, unsigned int>;
  EXPECT_EQ(Firmware("13.6.20.7"), (TPair{20130620, 7}));
  EXPECT_EQ(Firmware("95.1.2.3"), (TPair{19950102, 3}));
  EXPECT_EQ(Firmware("89.12.31.0"), (TPair{20891231, 0}));
  EXPECT_EQ(Firmware("13.6.20.7.8.9.10"), (TPair{20130620, 10})) << "what has no place is dropped";
  EXPECT_EQ(Firmware("13.6"), (TPair{20130000, 6}));
  EXPECT_EQ(Firmware("beta.2..x"), (TPair{20000200, 0}));
  EXPECT_EQ(Firmware("99999999999.1.1.1").second, 1u);

  VXSIM_ClearFaults();
  VXSIM_AddFault("call VX_GetStringMaxLength feature FirmwareVersion any rc 53");
  unsigned int v[6] = {9, 9, 9, 9, 9, 9};
  EXPECT_EQ(GetHardwareVersion(&v[0], &v[1], &v[2], &v[3], nullptr, &v[5]), RC_P5_INVALID);
  EXPECT_EQ(GetHardwareVersion(&v[0], nullptr, &v[2], &v[3], nullptr, nullptr), RC_P2_INVALID);
  EXPECT_EQ(GetHardwareVersion(&v[0], &v[1], &v[2], &v[3], &v[4], nullptr), RC_P6_INVALID);
  EXPECT_EQ(v[0], 9u) << "nothing is written then";
  EXPECT_EQ(GetHardwareVersion(&v[0], &v[1], &v[2], &v[3], &v[4], &v[5]), RC_SUCCESS);
  EXPECT_EQ(v[4] + v[5], 0u);
}

TEST_F(Description, SerialNumberIsTheFirstNumberOfTheText)
{
  OpenCamera(101);
  int number = 77;
  EXPECT_EQ(GetCameraSerialNumber(&number), RC_SUCCESS);
  EXPECT_EQ(number, 512);
  EXPECT_EQ(SerialNumber("SN-01234X99"), 1234);
  EXPECT_EQ(SerialNumber("none"), 0);
  EXPECT_EQ(SerialNumber("A99999999999"), INT_MAX);
  EXPECT_EQ(GetCameraSerialNumber(nullptr), RC_P1_INVALID);
  for (const char* const length : {"0", "-1", "2147483647"}) {
    VXSIM_ClearFaults();
    VXSIM_AddFault((std::string("call VX_GetStringMaxLength any out ") + length).c_str());
    EXPECT_EQ(GetCameraSerialNumber(&number), RC_SUCCESS) << length;
  }
  VXSIM_AddFault("call VX_GetString any unterminated");
  EXPECT_EQ(GetCameraSerialNumber(&number), RC_SUCCESS);

  wchar_t text[] = L"no digits";
  number = 77;
  extractNumberFromString(text, &number);
  extractNumberFromString(nullptr, &number);
  EXPECT_EQ(number, 77);
}

TEST_F(Description, HeadModelIsAlwaysTerminated)
{
  OpenCamera(101);
  std::vector<char> name(4096, 'x');
  EXPECT_EQ(GetHeadModel(name.data()), RC_SUCCESS);
  EXPECT_STREQ(name.data(), "TRELLIS CMOS");
  VXSIM_AddFault("call VX_GetString feature CameraModel any unterminated");
  EXPECT_EQ(GetHeadModel(name.data()), RC_SUCCESS);
  EXPECT_EQ(std::strlen(name.data()), 4095u);
  for (const char* const function : {"VX_GetString", "VX_GetStringMaxLength"}) {
    VXSIM_ClearFaults();
    VXSIM_AddFault((std::string("call ") + function + " any rc 53").c_str());
    EXPECT_EQ(GetHeadModel(name.data()), RC_SUCCESS);
    EXPECT_STREQ(name.data(), "");
  }
  EXPECT_EQ(GetHeadModel(nullptr), RC_P1_INVALID);
  name[0] = 'x';
  EXPECT_EQ(GetControllerCardModel(name.data()), RC_SUCCESS);
  EXPECT_STREQ(name.data(), "");
  EXPECT_EQ(GetControllerCardModel(nullptr), RC_SUCCESS);
}

TEST_F(Description, PixelSizeIsTenWhenItIsNotKnown)
{
  OpenCamera(101);
  float width = 0.0F;
  float height = 0.0F;
  EXPECT_EQ(GetPixelSize(&width, &height), RC_SUCCESS);
  EXPECT_FLOAT_EQ(width, 6.5F);
  EXPECT_FLOAT_EQ(height, 6.5F);
  EXPECT_EQ(GetPixelSize(nullptr, nullptr), RC_SUCCESS);
  VXSIM_AddFault("call VX_GetFloat feature PixelHeight any rc 53");
  EXPECT_EQ(GetPixelSize(&width, &height), RC_P2_INVALID);
  EXPECT_EQ(width, 10.0F);
  EXPECT_EQ(height, 10.0F);
  VXSIM_AddFault("call VX_GetFloat feature PixelWidth any rc 53");
  EXPECT_EQ(GetPixelSize(&width, &height), RC_P1_INVALID);
  OpenCamera(103);
  width = 0.0F;
  EXPECT_EQ(GetPixelSize(&width, &height), RC_NOT_SUPPORTED);
  EXPECT_EQ(width, 10.0F);
}

} // namespace
