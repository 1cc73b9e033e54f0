// SPDX-License-Identifier: MIT
// Every exported function in every state of a camera's life: none crashes, and each answers as it is documented.
#include "tests/support/CounterCameraTest.h"
#include "tests/support/DocumentedCodes.h"

#include <array>
#include <climits>
#include <fstream>
#include <functional>
#include <ostream>
#include <set>
#include <string_view>
#include <tuple>
#include <type_traits>

namespace {

constexpr std::string_view kCounterModel = "RQ512_LX"; // of kCounterCamera
constexpr unsigned long kPixels = kCounterPixels;
constexpr std::size_t kMostImages = 16;
constexpr int kImages = 3; // of a running run

/// Outputs and arrays for one call, large enough for each.
struct TRoom
{
  std::array<int, 8> ints{};
  std::array<unsigned int, 8> words{};
  std::array<long, 8> longs{};
  std::array<float, 8> floats{};
  std::array<double, 2> doubles{};
  long long ticks = 0;
  std::array<char, 4096> text{};
  std::array<unsigned char, kPixels * kMostImages> data8{};
  std::array<unsigned short, kPixels * kMostImages> data16{};
  std::array<int, kPixels * kMostImages> data32{};
  vxmcd_Capabilities capabilities{sizeof(vxmcd_Capabilities), 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  std::wstring wideText;
};

/// A function that returns a result code.
struct TFunction
{
  const char* name;
  std::function<unsigned int(TRoom&)> call;   ///< as a program would
  std::function<unsigned int(int)> callBadly; ///< with this for every number and null for every pointer
};

template <class T>
T Make(int number)
{
  if constexpr (std::is_pointer_v<T>)
    return nullptr;
  else
    return static_cast<T>(number);
}

template <class... Arguments>
unsigned int CallBadly(unsigned int (*function)(Arguments...), [[maybe_unused]] int number)
{
  return function(Make<Arguments>(number)...);
}

// Without an image to come only a cancelled wait ends.
template <class Wait>
unsigned int Cancelled(Wait wait)
{
  CancelWait();
  return wait();
}

#define ROW(name, ...)                                                                                            \
  {                                                                                                               \
#name, []([[maybe_unused]] TRoom &                                                                            \
              room) { return name(__VA_ARGS__); }, [](int number) { return CallBadly(name, number); }             \
  }
#define WAIT_ROW(name, ...)                                                                                       \
  {                                                                                                               \
#name, [](TRoom&) { return Cancelled([] { return name(__VA_ARGS__); }); },                                    \
        [](int number) { return Cancelled([number] { return CallBadly(name, number); }); }   \
  }
#define INTS(first) &room.ints[first]
#define WORDS(first) &room.words[first]
#define LONGS(first) &room.longs[first]
#define FLOATS(first) &room.floats[first]

// In the order of the public header, but for the last. A new exported function needs a row here, and one in
// DocumentedCodes.cpp.
const TFunction kFunctions[] = {
    ROW(GetAvailableCameras, LONGS(0)),
    ROW(GetCameraHandle, 0, LONGS(0)),
    ROW(SetCurrentCamera, 101),
    ROW(GetCurrentCamera, LONGS(0)),
    ROW(GetSDK3Handle, INTS(0)),
    ROW(ShutDown),
    ROW(getSDKVersion, WORDS(0), WORDS(1), WORDS(2), WORDS(3)),
    ROW(GetSoftwareVersion, WORDS(0), WORDS(1), WORDS(2), WORDS(3), WORDS(4), WORDS(5)),
    ROW(GetVersionInfo, VXMCD_VERSION_LIBRARY, room.text.data(), 16),
    ROW(SetExposureTime, 0.01F),
    ROW(SetAccumulationCycleTime, 0.01F),
    ROW(SetKineticCycleTime, 0.01F),
    ROW(SetAcquisitionMode, 5),
    ROW(SetNumberAccumulations, 2),
    ROW(SetNumberKinetics, 5),
    ROW(SetReadMode, 4),
    ROW(SetTriggerMode, 0),
    ROW(SendSoftwareTrigger),
    ROW(SetOverlapMode, 1),
    ROW(SetFrameTransferMode, 1),
    ROW(GetAcquisitionTimings, FLOATS(0), FLOATS(1), FLOATS(2)),
    ROW(GetReadOutTime, FLOATS(0)),
    ROW(GetMaximumExposure, FLOATS(0)),
    ROW(GetDetector, INTS(0), INTS(1)),
    ROW(SetImage, 1, 1, 1, 16, 1, 8),
    ROW(SetRandomTracks, 2, room.ints.data()),
    ROW(GetMaximumBinning, 4, 0, INTS(0)),
    ROW(SetADChannel, 0),
    ROW(GetNumberADChannels, INTS(0)),
    ROW(GetBitDepth, 0, INTS(0)),
    ROW(SetOutputAmplifier, 0),
    ROW(GetNumberAmp, INTS(0)),
    ROW(IsAmplifierAvailable, 0),
    ROW(GetAmpDesc, 0, room.text.data(), 16),
    ROW(GetAmpMaxSpeed, 0, FLOATS(0)),
    ROW(SetHSSpeed, 0, 0),
    ROW(GetNumberHSSpeeds, 0, 0, INTS(0)),
    ROW(GetHSSpeed, 0, 0, 0, FLOATS(0)),
    ROW(SetPreAmpGain, 0),
    ROW(GetNumberPreAmpGains, INTS(0)),
    ROW(GetPreAmpGain, 0, FLOATS(0)),
    ROW(IsPreAmpGainAvailable, 0, 0, 0, 0, INTS(0)),
    ROW(GetPreAmpGainText, 0, room.text.data(), 30),
    ROW(SetBaselineClamp, 1),
    ROW(GetBaselineClamp, INTS(0)),
    ROW(GetFIFOUsage, INTS(0)),
    ROW(SetTemperature, 0),
    ROW(CoolerON),
    ROW(CoolerOFF),
    ROW(IsCoolerOn, INTS(0)),
    ROW(GetTemperatureF, FLOATS(0)),
    ROW(GetTemperature, INTS(0)),
    ROW(GetTemperatureRange, INTS(0), INTS(1)),
    ROW(GetTemperatureStatus, FLOATS(0), FLOATS(1), FLOATS(2), FLOATS(3)),
    ROW(SetFanMode, 0),
    ROW(GetCapabilities, &room.capabilities),
    ROW(GetHardwareVersion, WORDS(0), WORDS(1), WORDS(2), WORDS(3), WORDS(4), WORDS(5)),
    ROW(GetCameraSerialNumber, INTS(0)),
    ROW(GetHeadModel, room.text.data()),
    ROW(GetPixelSize, FLOATS(0), FLOATS(1)),
    ROW(GetControllerCardModel, room.text.data()),
    ROW(I2CBurstRead, 0x48, 2, room.data8.data()),
    ROW(I2CBurstWrite, 0x48, 2, room.data8.data()),
    ROW(vxsys_CameraPotsLoadFile, "/no/such/file"),
    ROW(vxsys_CameraPotsSaveFile, "/no/such/file"),
    ROW(vxsys_CameraPotsCommitValuesFromFile),
    ROW(vxsys_CameraPotsGetNumberGroups, INTS(0)),
    ROW(vxsys_CameraPotsGetGroupName, 0, room.text.data()),
    ROW(vxsys_CameraPotsGetNumberPotsInGroup, 0, INTS(0)),
    ROW(vxsys_CameraPotsGetPotInfo, 0, 0, 0, room.text.data()),
    ROW(vxsys_CameraPotsGetPotValue, 0, 0, INTS(0)),
    ROW(vxsys_CameraPotsSetPotValue, 0, 0, 1),
    ROW(vxsys_CameraPotsGetRailValue, 0, 0, INTS(0)),
    ROW(vxsys_CameraPotsSetPotDefaultEnable, 1),
    ROW(vxsys_CameraPotsGetPotDefaultEnable, INTS(0)),
    ROW(vxsys_CameraPotsRegisterObserver, nullptr, INTS(0)),
    ROW(vxsys_CameraPotsUnregisterObserver, INTS(0)),
    ROW(vxsys_EEPUP),
    ROW(vxsys_EEPVR, INTS(0), INTS(1)),
    ROW(vxsys_EEPFL),
    ROW(vxsys_EEPLD, "/no/such/file"),
    ROW(vxsys_EEPSV, "/no/such/file"),
    ROW(LoadEEPROM, "/no/such/file"),
    ROW(TriggerBoard_Initialize),
    ROW(TriggerBoard_ShutDown),
    ROW(TriggerBoard_GetAvailableTriggers, INTS(0)),
    ROW(TriggerBoard_GetTriggerHandle, 0, INTS(0)),
    ROW(TriggerBoard_SetCurrentTrigger, 0),
    ROW(TriggerBoard_I2CWrite, 1, 2, 3),
    ROW(vxsys_GetBaselineLevel, INTS(0)),
    ROW(vxsys_GetKeepCleanTime, FLOATS(0)),
    ROW(vxsys_GetTemperatureTolerance, FLOATS(0)),
    ROW(vxsys_GetHSSpeedLimits, FLOATS(0), FLOATS(1), FLOATS(2)),
    ROW(vxsys_GetDummyPixels, INTS(0), INTS(1), INTS(2), INTS(3)),
    ROW(vxsys_GetMinimumNumberInSeries, INTS(0)),
    ROW(vxsys_IsVacuumCooling, INTS(0)),
    ROW(vxsys_IsTemperatureAvailableDuringAcquisition, INTS(0)),
    ROW(vxsys_GetDDGIOCFrequencyRange, room.doubles.data(), room.doubles.data()),
    ROW(StartAcquisition),
    ROW(AbortAcquisition),
    WAIT_ROW(WaitForAcquisition),
    WAIT_ROW(WaitForAcquisitionTimeOut, -1),
    WAIT_ROW(WaitForAcquisitionByHandle, 101),
    WAIT_ROW(WaitForAcquisitionByHandleTimeOut, 101, -1),
    ROW(CancelWait),
    ROW(GetStatus, INTS(0)),
    ROW(GetAcquisitionProgress, LONGS(0), LONGS(1)),
    ROW(GetSizeOfCircularBuffer, LONGS(0)),
    ROW(FreeInternalMemory),
    ROW(createAcquisitionEvents),
    ROW(SetSpool, 0, 3, room.text.data()),
    ROW(SetSpoolThreadCount, 2),
    ROW(SetMetaData, 1),
    ROW(vxsys_GetRawMetaDataInfo, WORDS(0), &room.ticks, 0),
    ROW(GetAcquiredData8, room.data8.data(), kPixels),
    ROW(GetAcquiredData16, room.data16.data(), kPixels),
    ROW(GetAcquiredData, room.data32.data(), kPixels),
    ROW(GetOldestImage8, room.data8.data(), kPixels),
    ROW(GetOldestImage16, room.data16.data(), kPixels),
    ROW(GetOldestImage, room.data32.data(), kPixels),
    ROW(GetMostRecentImage8, room.data8.data(), kPixels),
    ROW(GetMostRecentImage16, room.data16.data(), kPixels),
    ROW(GetMostRecentImage, room.data32.data(), kPixels),
    ROW(GetImages8, 1, 2, room.data8.data(), kPixels, LONGS(0), LONGS(1)),
    ROW(GetImages16, 1, 2, room.data16.data(), kPixels, LONGS(0), LONGS(1)),
    ROW(GetImages, 1, 2, room.data32.data(), kPixels, LONGS(0), LONGS(1)),
    ROW(GetNumberAvailableImages, INTS(0), INTS(1)),
    ROW(GetTotalNumberImagesAcquired, LONGS(0)),
    {"TriggerModeFeatureFinder", [](TRoom& room) { return TriggerModeFeatureFinder(room.wideText); }, nullptr},
    ROW(Initialize, nullptr), // last: the others have never seen an open camera in State::NoCamera
};

/// A function that returns no result code.
struct TPlainFunction
{
  const char* name;
  void (*call)(TRoom&);
};

const TPlainFunction kPlainFunctions[] = {
    {"getCameraFromHandle",
     [](TRoom&) {
       for (const long handle : {101L, 0L, -1L, LONG_MAX}) EXPECT_NE(getCameraFromHandle(handle), nullptr);
     }},
    {"MyInitialise", [](TRoom&) { MyInitialise(); }},
    {"MyFinalise", [](TRoom&) { MyFinalise(); }},
    {"my_init", [](TRoom&) { my_init(); }},
    {"my_fini", [](TRoom&) { my_fini(); }},
    {"extractNumberFromString",
     [](TRoom& room) {
       std::array<wchar_t, 8> text = {L'S', L'N', L'-', L'1', L'2'};
       extractNumberFromString(text.data(), INTS(0));
       EXPECT_EQ(room.ints[0], 12);
       extractNumberFromString(text.data(), nullptr);
       extractNumberFromString(nullptr, nullptr);
     }},
    {"GetPrivateProfileInt",
     [](TRoom&) {
       EXPECT_EQ(GetPrivateProfileInt("section", "key", 7, "/no/such/file"), 7U);
       EXPECT_EQ(GetPrivateProfileInt(nullptr, nullptr, 7, nullptr), 0U);
     }},
    {"GetPrivateProfileString",
     [](TRoom& room) {
       EXPECT_EQ(GetPrivateProfileString("section", "key", "7", room.text.data(), 8, "/no/such/file"), 0U);
       EXPECT_STREQ(room.text.data(), "7");
       EXPECT_EQ(GetPrivateProfileString(nullptr, nullptr, nullptr, nullptr, 0, nullptr), 0U);
     }},
    {"WritePrivateProfileString",
     [](TRoom&) { EXPECT_EQ(WritePrivateProfileString(nullptr, nullptr, nullptr, nullptr), 0U); }},
    {"vxmcd_GetResultName", [](TRoom&) { EXPECT_STREQ(vxmcd_GetResultName(20002), "RC_SUCCESS"); }},
    {"vxmcd_GetResultMeaning", [](TRoom&) { EXPECT_STREQ(vxmcd_GetResultMeaning(0), ""); }},
    {"vxmcd_GetResultAdvice", [](TRoom&) { EXPECT_STREQ(vxmcd_GetResultAdvice(0), ""); }},
};

// What the library exports besides functions.
const std::set<std::string> kObjects = {"HandleToCameraMap", "InvalidCamera", "currentCameraShutdownMutex",
                                        "gblVxmcdCameraHandle", "gblp_LoadUSBi2cDll"};

std::set<std::string> FixedResultNames()
{
  return {
#define FIXED_RESULT(name, code, reason) #name,
#define FIXED_RESULT_TYPED(name, arguments, symbol, code, reason) #name,
#define FIXED_VALUE(name, parameters, outputs, type, value, code, reason) #name,
#include "api/fixed_results.def"
  };
}

enum class State
{
  NoCamera, ///< never opened
  Open,
  Running,
  Failed, ///< the run ended because the camera's memory overflowed
  Closed  ///< after a run
};

std::string NameOf(State state)
{
  constexpr const char* kNames[] = {"NoCamera", "Open", "Running", "Failed", "Closed"};
  return kNames[static_cast<int>(state)];
}

void PrintTo(State state, std::ostream* out)
{
  *out << NameOf(state);
}

constexpr int kNoStatus = 0;

bool IsOpen(State state)
{
  return state == State::Open || state == State::Running || state == State::Failed;
}

int StatusIn(State state)
{
  if (!IsOpen(state)) return kNoStatus;
  if (state == State::Running) return RC_ACQUIRING;
  return state == State::Failed ? RC_STATUS_HARDWARE_OVERFLOW : RC_IDLE;
}

} // namespace

using TCase = std::tuple<State, std::string>; ///< state and camera model

class AllFunctions : public CounterCameraTest, public ::testing::WithParamInterface<TCase>
{
protected:
  static State TheState() { return std::get<State>(GetParam()); }

  /// Brings the camera into the state, unless it still is in it.
  void Enter()
  {
    int handle = -1;
    GetSDK3Handle(&handle);
    int status = kNoStatus;
    GetStatus(&status);
    if ((handle != -1) == IsOpen(TheState()) && status == StatusIn(TheState())) return;

    ShutDown();
    std::string configuration = kCounterCamera;
    configuration.replace(configuration.find(kCounterModel), kCounterModel.size(),
                          std::get<std::string>(GetParam()));
    ASSERT_EQ(VXSIM_Configure(configuration.c_str()), VX_SUCCESS) << VXSIM_GetLastError();
    if (TheState() == State::NoCamera) return;
    OpenCamera(101);
    if (TheState() == State::Open) return;
    StartUntilAborted();
    Push(kImages);
    ASSERT_TRUE(HasImages(kImages));
    if (TheState() == State::Closed) ShutDown();
    if (TheState() != State::Failed) return;
    ASSERT_EQ(VXSIM_PushWaitCode(0, VX_ERR_HARDWARE_OVERFLOW), VX_SUCCESS);
    ASSERT_TRUE(Eventually([] { return Status() == RC_STATUS_HARDWARE_OVERFLOW; }));
  }

  static void ExpectDocumented(const TFunction& function, unsigned int code)
  {
    EXPECT_TRUE(IsDocumented(function.name, code)) << code << " " << vxmcd_GetResultName(code);
  }
};

TEST_P(AllFunctions, AnswerAsDocumented)
{
  for (const TFunction& function : kFunctions) {
    SCOPED_TRACE(function.name);
    ASSERT_NO_FATAL_FAILURE(Enter());
    TRoom room;
    const unsigned int code = function.call(room);
    ExpectDocumented(function, code);
    EXPECT_EQ(code == RC_NOT_INITIALIZED, NeedsCamera(function.name) && !IsOpen(TheState()));
  }
}

TEST_P(AllFunctions, SurviveNullPointersAndSenselessNumbers)
{
  for (const TFunction& function : kFunctions) {
    if (!function.callBadly) continue;
    for (const int number : {0, 1, 2, -1, INT_MAX, INT_MIN}) {
      SCOPED_TRACE(testing::Message() << function.name << " with " << number);
      ASSERT_NO_FATAL_FAILURE(Enter());
      ExpectDocumented(function, function.callBadly(number));
    }
  }
}

TEST_P(AllFunctions, WithoutAResultCodeDoTheirWork)
{
  ASSERT_NO_FATAL_FAILURE(Enter());
  for (const TPlainFunction& function : kPlainFunctions) {
    SCOPED_TRACE(function.name);
    TRoom room;
    function.call(room);
  }
}

TEST_P(AllFunctions, OfAFixedResultKeepIt)
{
  ASSERT_NO_FATAL_FAILURE(Enter());
  int outputs[5] = {};
#define FIXED_RESULT(name, code, reason)                                                                          \
  EXPECT_EQ(name(&outputs[0], 1, 2.0, "text"), static_cast<unsigned int>(code)) << #name;
#define FIXED_RESULT_TYPED(name, arguments, symbol, code, reason)                                                 \
  EXPECT_EQ(CallBadly(name, 1), static_cast<unsigned int>(code)) << #name;
#define FIXED_RESULT_TYPED_ONLY(name, arguments, symbol, code, reason)                                            \
  EXPECT_EQ(name##Decorated(1), static_cast<unsigned int>(code)) << #name;
#include "api/fixed_results.def"
  int status = kNoStatus;
  GetStatus(&status);
  EXPECT_EQ(status, StatusIn(TheState())) << "one of them does something";
}

// Cameras with the direct and with the simple gain control.
INSTANTIATE_TEST_SUITE_P(In, AllFunctions,
                         ::testing::Combine(::testing::Values(State::NoCamera, State::Open, State::Running,
                                                              State::Failed, State::Closed),
                                            ::testing::Values("RQ512_LX", "TRELLIS CMOS")),
                         [](const auto& row) {
                           const std::string& model = std::get<std::string>(row.param);
                           return NameOf(std::get<State>(row.param)) + model.substr(0, model.find_first_of("_ "));
                         });

TEST(AllFunctionsTable, HasARowForEveryExportedFunction)
{
  std::set<std::string> expected;
  std::ifstream file(EXPORTED_NAMES);
  for (std::string name; std::getline(file, name);)
    if (name.rfind("_Z", 0) != 0 && kObjects.count(name) == 0) expected.insert(name);
  ASSERT_GT(expected.size(), 500U);

  std::set<std::string> covered = FixedResultNames();
  for (const TFunction& function : kFunctions) EXPECT_TRUE(covered.insert(function.name).second) << function.name;
  for (const TPlainFunction& function : kPlainFunctions)
    EXPECT_TRUE(covered.insert(function.name).second) << function.name;
  for (const std::string& name : expected) EXPECT_EQ(covered.count(name), 1U) << name << " has no row";
  for (const std::string& name : covered) EXPECT_EQ(expected.count(name), 1U) << name << " is not exported";
}
