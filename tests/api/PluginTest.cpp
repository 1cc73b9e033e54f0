// SPDX-License-Identifier: MIT
// EEPROM and trigger board through the interface, with the example libraries and with ones that fall short; service
// getters.
#include "tests/support/SimulatedCameraTest.h"
#include "tests/support/TScratchWorkingDirectory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

// Exported for programs that look at it.
class TLoadUSBi2cDll;
extern TLoadUSBi2cDll* gblp_LoadUSBi2cDll;

namespace {

constexpr const char* kConfigurationLibrary = "libvxconf_regcam.so";
constexpr const char* kTriggerBoardLibrary = "usbi2c.dll";
constexpr unsigned int kNotLoaded = 1;

std::string Image(unsigned char version)
{
  return std::string(1, static_cast<char>(version)) + std::string(255, '\0');
}

class Plugins : public SimulatedCameraTest
{
protected:
  Plugins() { unsetenv("VXCONF_EEPROM"); }
  void TearDown() override
  {
    SimulatedCameraTest::TearDown();
    unsetenv("VXCONF_EEPROM");
  }

  void Put(const std::string& library) const { here_.Copy(VXMCD_TEST_PLUGINS "/" + library, library); }
  void PutVariant(const std::string& variant, const std::string& library) const
  {
    here_.Copy(VXMCD_TEST_PLUGIN_VARIANTS "/" + variant + "/" + library, library);
  }

  static void ExpectEepromCodes(unsigned int update, unsigned int version, unsigned int others, unsigned int load)
  {
    int first = 4711;
    int number = 4711;
    EXPECT_EQ(vxsys_EEPUP(), update);
    EXPECT_EQ(vxsys_EEPVR(&first, &number), version);
    EXPECT_EQ(vxsys_EEPFL(), others);
    EXPECT_EQ(vxsys_EEPLD("image"), others);
    EXPECT_EQ(vxsys_EEPSV("image"), others);
    EXPECT_EQ(LoadEEPROM("image"), load);
    EXPECT_EQ(first, 4711);
    EXPECT_EQ(number, 4711);
  }
  static void ExpectNoEeprom()
  {
    ExpectEepromCodes(RC_NOT_SUPPORTED, RC_NOT_SUPPORTED, RC_FEATURE_ERROR, RC_NOT_SUPPORTED);
  }
  static int Version()
  {
    int first = -1;
    int version = -1;
    EXPECT_EQ(vxsys_EEPVR(&first, &version), RC_SUCCESS);
    EXPECT_EQ(first, 0);
    return version;
  }

  const TScratchWorkingDirectory here_;
};

using Eeprom = Plugins;
using TriggerBoard = Plugins;
using ServiceGetters = Plugins;

TEST_F(Eeprom, NeedsACameraAndAConfigurationLibrary)
{
  Put(kConfigurationLibrary);
  ExpectEepromCodes(RC_NOT_INITIALIZED, RC_NOT_INITIALIZED, RC_NOT_INITIALIZED, RC_NOT_INITIALIZED);
  here_.Remove(kConfigurationLibrary);
  Open();
  ExpectNoEeprom();
}

TEST_F(Eeprom, ContentsGoBetweenCameraAndFiles)
{
  Put(kConfigurationLibrary);
  Open();
  EXPECT_EQ(Version(), 1);
  EXPECT_EQ(vxsys_EEPVR(nullptr, nullptr), RC_SUCCESS);
  EXPECT_EQ(vxsys_EEPSV("saved"), RC_SUCCESS);
  EXPECT_EQ(here_.ReadFile("saved").size(), 256u);

  here_.WriteFile("image", Image(9));
  EXPECT_EQ(vxsys_EEPLD("image"), RC_SUCCESS);
  EXPECT_EQ(Version(), 9);
  EXPECT_EQ(vxsys_EEPUP(), RC_SUCCESS) << "read again: the camera still has the first ones";
  EXPECT_EQ(Version(), 1);
  EXPECT_EQ(vxsys_EEPLD("image"), RC_SUCCESS);
  EXPECT_EQ(vxsys_EEPFL(), RC_SUCCESS);
  EXPECT_EQ(vxsys_EEPUP(), RC_SUCCESS);
  EXPECT_EQ(Version(), 9);

  EXPECT_EQ(LoadEEPROM("saved"), RC_SUCCESS);
  EXPECT_EQ(vxsys_EEPUP(), RC_SUCCESS);
  EXPECT_EQ(Version(), 1) << "loaded and stored at once";

  for (const char* const bad : {"missing", static_cast<const char*>(nullptr), "."}) {
    EXPECT_EQ(vxsys_EEPLD(bad), RC_FEATURE_ERROR);
    EXPECT_EQ(vxsys_EEPSV(bad ? "no/such/directory/file" : bad), RC_FEATURE_ERROR);
    EXPECT_EQ(LoadEEPROM(bad), RC_FEATURE_ERROR);
  }
  EXPECT_EQ(Version(), 1);
}

TEST_F(Eeprom, IsReadOnceAndTriedAgainUntilThatSucceeds)
{
  Put(kConfigurationLibrary);
  setenv("VXCONF_EEPROM", "eeprom", 1);
  Open();
  ExpectEepromCodes(RC_FEATURE_ERROR, RC_FEATURE_ERROR, RC_FEATURE_ERROR, RC_FEATURE_ERROR);

  here_.WriteFile("image", Image(7));
  EXPECT_EQ(LoadEEPROM("image"), RC_SUCCESS) << "does not read first";
  here_.Remove("eeprom");
  EXPECT_EQ(vxsys_EEPFL(), RC_FEATURE_ERROR) << "and does not count as having read";
  here_.WriteFile("eeprom", Image(3));
  EXPECT_EQ(vxsys_EEPFL(), RC_SUCCESS);
  here_.WriteFile("eeprom", Image(4));
  EXPECT_EQ(Version(), 3) << "read already";
  here_.Remove("eeprom");
  EXPECT_EQ(vxsys_EEPUP(), RC_FEATURE_ERROR) << "reads again";
  EXPECT_EQ(Version(), 3) << "which does not undo the first time";
  EXPECT_EQ(vxsys_EEPSV("saved"), RC_SUCCESS);
  EXPECT_EQ(here_.ReadFile("saved"), Image(3));

  setenv("VXCONF_EEPROM", "no/such/directory/eeprom", 1);
  EXPECT_EQ(vxsys_EEPFL(), RC_FEATURE_ERROR);
  EXPECT_EQ(LoadEEPROM("saved"), RC_FEATURE_ERROR) << "loaded, but not stored";

  ASSERT_EQ(ShutDown(), RC_SUCCESS);
  ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
  EXPECT_EQ(vxsys_EEPFL(), RC_FEATURE_ERROR) << "a camera that is opened anew is read anew";
}

TEST_F(Eeprom, LibrariesThatFallShort)
{
  for (const char* const variant : {"no_factory", "null_configuration"}) {
    PutVariant(variant, kConfigurationLibrary);
    Open();
    ExpectNoEeprom();
    ASSERT_EQ(ShutDown(), RC_SUCCESS);
  }
  here_.WriteFile(kConfigurationLibrary, "no ELF");
  Open();
  ExpectNoEeprom();
  ASSERT_EQ(ShutDown(), RC_SUCCESS);

  PutVariant("failing_write", kConfigurationLibrary);
  Open();
  EXPECT_EQ(vxsys_EEPFL(), RC_FEATURE_ERROR);
  EXPECT_EQ(vxsys_EEPLD("image"), RC_SUCCESS);
  EXPECT_EQ(LoadEEPROM("image"), RC_FEATURE_ERROR);
  EXPECT_EQ(LoadEEPROM(nullptr), RC_FEATURE_ERROR);
  EXPECT_EQ(Version(), -2) << "any 32 bits";
  ASSERT_EQ(ShutDown(), RC_SUCCESS);

  PutVariant("no_destroy", kConfigurationLibrary);
  Open();
  EXPECT_EQ(vxsys_EEPUP(), RC_SUCCESS);
  ASSERT_EQ(ShutDown(), RC_SUCCESS);
}

// The first ShutDown() stops in the middle; a second one does the rest. This camera cannot be stopped, so it has
// its buffers until then.
TEST_F(Eeprom, AConfigurationThatThrowsAtTheEndReachesTheCallerOfShutDown)
{
  PutVariant("throwing_destroy", kConfigurationLibrary);
  Open();
  ASSERT_EQ(SetAcquisitionMode(5), RC_SUCCESS);
  ASSERT_EQ(StartAcquisition(), RC_SUCCESS);
  PushFrames(1);
  ASSERT_EQ(VXSIM_AddFault("call VX_Command feature AcquisitionStop rc 53"), VX_SUCCESS);
  ASSERT_EQ(VXSIM_AddFault("call VX_Flush rc 53"), VX_SUCCESS);
  EXPECT_THROW(ShutDown(), std::runtime_error);
  PushFrame(2);
  EXPECT_EQ(vxsys_EEPUP(), RC_NOT_INITIALIZED);
  EXPECT_EQ(ShutDown(), RC_SUCCESS);
}

// What was made before the exception stays, the open camera too, so this happens in a separate process.
TEST_F(Eeprom, AFactoryThatThrowsReachesTheCallerOfInitialize)
{
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  PutVariant("throwing_factory", kConfigurationLibrary);
  EXPECT_EXIT(
      {
        int step = 1;
        try {
          Initialize(nullptr);
        } catch (const std::exception&) {
          step = 0;
        }
        if (VXSIM_GetOpenCount() != 1 || VXSIM_GetInitialiseCount() != 1) step = 2;
        int status = 0;
        if (GetStatus(&status) != RC_NOT_INITIALIZED || vxsys_EEPUP() != RC_NOT_INITIALIZED) step = 3;
        if (TriggerBoard_Initialize() != kNotLoaded) step = 4;
        if (ShutDown() != RC_NOT_INITIALIZED) step = 5;
        here_.RemoveAll();
        _exit(step);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST_F(TriggerBoard, AnswersSuccessBeforeTheFirstCameraAndOneWithoutALibrary)
{
  GTEST_FLAG_SET(death_test_style, "threadsafe"); // in a process that has opened nothing
  EXPECT_EXIT(
      {
        int output = 4711;
        bool isRight = !gblp_LoadUSBi2cDll && TriggerBoard_Initialize() == RC_SUCCESS &&
                       TriggerBoard_ShutDown() == RC_SUCCESS &&
                       TriggerBoard_GetAvailableTriggers(&output) == RC_SUCCESS &&
                       TriggerBoard_GetTriggerHandle(0, &output) == RC_SUCCESS &&
                       TriggerBoard_SetCurrentTrigger(0) == RC_SUCCESS &&
                       TriggerBoard_I2CWrite(1, 2, 3) == RC_SUCCESS && output == 4711;
        // Also an Initialize() that finds no camera looks for the library.
        isRight = isRight && VXSIM_Configure("[Simulator]\nCameras=0\n") == VX_SUCCESS &&
                  Initialize(nullptr) == RC_NO_CAMERA && gblp_LoadUSBi2cDll &&
                  TriggerBoard_Initialize() == kNotLoaded;
        here_.RemoveAll();
        _exit(isRight ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST_F(TriggerBoard, PassesTheStatusesOfTheLibraryOn)
{
  Put(kTriggerBoardLibrary);
  Open();
  int output = 4711;
  EXPECT_EQ(TriggerBoard_ShutDown(), static_cast<unsigned int>(-1));
  EXPECT_EQ(TriggerBoard_Initialize(), 0u);
  EXPECT_EQ(TriggerBoard_GetAvailableTriggers(&output), 0u);
  EXPECT_EQ(output, 2);
  EXPECT_EQ(TriggerBoard_GetTriggerHandle(1, &output), 0u);
  EXPECT_EQ(output, 1001);
  EXPECT_EQ(TriggerBoard_GetTriggerHandle(2, &output), static_cast<unsigned int>(-2));
  EXPECT_EQ(TriggerBoard_SetCurrentTrigger(1), 0u);
  EXPECT_EQ(TriggerBoard_I2CWrite(0x150, 0x201, 0x3FF), RC_SUCCESS);
  EXPECT_EQ(TriggerBoard_I2CWrite(0x51, 0, 0), RC_SUCCESS) << "whatever comes of it";
  EXPECT_EQ(TriggerBoard_ShutDown(), 0u);
}

TEST_F(TriggerBoard, TheLibraryStaysUntilTheLastShutDownAndTheObjectForGood)
{
  ASSERT_EQ(VXSIM_Configure(kTwoManualCameras), VX_SUCCESS);
  Put(kTriggerBoardLibrary);
  OpenCamera(101);
  TLoadUSBi2cDll* const object = gblp_LoadUSBi2cDll;
  OpenCamera(102);
  EXPECT_EQ(TriggerBoard_Initialize(), 0u);
  ASSERT_EQ(ShutDown(), RC_SUCCESS);
  EXPECT_EQ(TriggerBoard_ShutDown(), 0u) << "the first camera is still open";
  EXPECT_EQ(ShutDown(), RC_NOT_INITIALIZED) << "nothing is open here, but it counts";
  EXPECT_EQ(TriggerBoard_Initialize(), kNotLoaded);
  EXPECT_EQ(gblp_LoadUSBi2cDll, object);
  ASSERT_EQ(SetCurrentCamera(101), RC_SUCCESS);
  ASSERT_EQ(ShutDown(), RC_SUCCESS);
  EXPECT_EQ(TriggerBoard_Initialize(), kNotLoaded);

  OpenCamera(101);
  EXPECT_EQ(TriggerBoard_Initialize(), 0u) << "loaded anew";
  EXPECT_EQ(gblp_LoadUSBi2cDll, object);
}

TEST_F(TriggerBoard, LibrariesThatFallShortAreNotLoaded)
{
  for (const char* const variant : {"without_ExternalTrigger", "without_but_linked"}) {
    SCOPED_TRACE(variant);
    PutVariant(variant, kTriggerBoardLibrary);
    Open();
    int output = 4711;
    EXPECT_EQ(TriggerBoard_Initialize(), kNotLoaded);
    EXPECT_EQ(TriggerBoard_GetAvailableTriggers(&output), kNotLoaded);
    EXPECT_EQ(TriggerBoard_GetTriggerHandle(0, &output), kNotLoaded);
    EXPECT_EQ(TriggerBoard_SetCurrentTrigger(0), kNotLoaded);
    EXPECT_EQ(TriggerBoard_ShutDown(), kNotLoaded);
    EXPECT_EQ(TriggerBoard_I2CWrite(1, 2, 3), RC_SUCCESS);
    EXPECT_EQ(output, 4711);
    EXPECT_EQ(ShutDown(), RC_SUCCESS);
  }
}

TEST_F(TriggerBoard, ALibraryMayCallWhileItIsLoadedAndUnloaded)
{
  PutVariant("calls_by_name", kTriggerBoardLibrary);
  Open();
  int answer = 4711;
  EXPECT_EQ(TriggerBoard_GetAvailableTriggers(&answer), 0u);
  EXPECT_EQ(answer, static_cast<int>(kNotLoaded));
  EXPECT_EQ(ShutDown(), RC_SUCCESS);
  EXPECT_EQ(TriggerBoard_GetAvailableTriggers(&answer), kNotLoaded);
}

// The child of a fork has the locks as they were, perhaps locked by a thread that it does not have.
TEST_F(TriggerBoard, AForkedChildWaitsForNobody)
{
  Put(kTriggerBoardLibrary);
  Open();
  const pid_t child = fork();
  if (child == 0) {
    alarm(20);
    int count = 4711;
    _exit(TriggerBoard_GetAvailableTriggers(&count) == kNotLoaded && count == 4711 ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(TriggerBoard_Initialize(), 0u) << "the parent goes on";
}

TEST_F(TriggerBoard, OpeningACameraInADirectoryThatIsGone)
{
  here_.RemoveAll();
  Open();
  EXPECT_EQ(TriggerBoard_Initialize(), kNotLoaded);
  ExpectNoEeprom();
}

TEST_F(ServiceGetters, AnswerTheSameWithoutACamera)
{
  float seconds = 0, celsius = 0, speeds[3] = {};
  int pixels[4] = {1, 1, 1, 1}, number = 0, isVacuum = 0, isAvailable = 0;
  double frequencies[2] = {};
  EXPECT_EQ(vxsys_GetKeepCleanTime(&seconds), RC_SUCCESS);
  EXPECT_EQ(vxsys_GetTemperatureTolerance(&celsius), RC_SUCCESS);
  EXPECT_EQ(vxsys_GetHSSpeedLimits(&speeds[0], &speeds[1], &speeds[2]), RC_SUCCESS);
  EXPECT_EQ(vxsys_GetDummyPixels(&pixels[0], &pixels[1], &pixels[2], &pixels[3]), RC_SUCCESS);
  EXPECT_EQ(vxsys_GetMinimumNumberInSeries(&number), RC_SUCCESS);
  EXPECT_EQ(vxsys_IsVacuumCooling(&isVacuum), RC_SUCCESS);
  EXPECT_EQ(vxsys_IsTemperatureAvailableDuringAcquisition(&isAvailable), RC_SUCCESS);
  EXPECT_EQ(vxsys_GetDDGIOCFrequencyRange(&frequencies[0], &frequencies[1]), RC_NOT_SUPPORTED);
  EXPECT_EQ(seconds, 0.001F);
  EXPECT_EQ(celsius, 2.5F);
  for (const float speed : speeds) EXPECT_EQ(speed, 1000.0F);
  for (const int count : pixels) EXPECT_EQ(count, 0);
  EXPECT_EQ(number, 1);
  EXPECT_EQ(isVacuum, 1);
  EXPECT_EQ(isAvailable, 1);
  for (const double frequency : frequencies) EXPECT_EQ(frequency, 1.0);
}

TEST_F(ServiceGetters, BaselineLevelIsTheCameras)
{
  int level = 4711;
  EXPECT_EQ(vxsys_GetBaselineLevel(&level), RC_NOT_INITIALIZED);
  Open();
  EXPECT_EQ(vxsys_GetBaselineLevel(&level), RC_SUCCESS);
  EXPECT_EQ(level, GetInt(L"BaselineLevel"));
  EXPECT_EQ(vxsys_GetBaselineLevel(nullptr), RC_SUCCESS);
  level = 4711;
  ASSERT_EQ(VXSIM_AddFault("call VX_GetInt feature BaselineLevel rc 53"), VX_SUCCESS);
  EXPECT_EQ(vxsys_GetBaselineLevel(&level), RC_P1_INVALID);
  EXPECT_EQ(level, 4711);
}

} // namespace
