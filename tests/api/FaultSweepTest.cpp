// SPDX-License-Identifier: MIT
// Every call of a whole session into the feature library fails once, and for good, with several codes.
#include "tests/support/CounterCameraTest.h"
#include "tests/support/DocumentedCodes.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/Sanitizers.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <map>
#include <mutex>
#include <optional>
#include <sstream>
#include <string_view>
#include <thread>

namespace {

constexpr int kSeriesImages = 3;
constexpr int kCleanImages = 5;
constexpr std::size_t kMaxImages = 16;
constexpr int kLongWaitMs = 20000;
// A frame that a fault has lost costs this long; a frame that is only late is then not looked at.
constexpr int kShortWaitMs = 25;
// Starting, stopping and closing may wait for a run to stop; nothing else takes noticeable time.
constexpr std::chrono::seconds kMaxControlCall{12};
constexpr std::chrono::seconds kMaxCall{3};

constexpr unsigned char kThermometer = 0x4B; // on the controller bus

const std::vector<int> kCodes = {1, 2, 3, 4, 5, 6, 37, 53, 54, VX_ERR_HARDWARE_OVERFLOW};

/// While it lives, every wait for a frame comes back soon with what it would have answered in the end. A run that
/// is stopped otherwise takes up to 100 ms to notice, which is too long thousands of times.
class TWaitShortener final
{
public:
  TWaitShortener() : thread_([this](const std::stop_token& stop) { Run(stop); }) {}

private:
  void Run(const std::stop_token& stop)
  {
    std::unique_lock lock(mutex_);
    while (!stop.stop_requested()) {
      // Most calls are over before the first time.
      stopped_.wait_for(lock, stop, std::chrono::milliseconds(2), [] { return false; });
      if (!stop.stop_requested()) VXSIM_PushWaitCode(0, VX_ERR_TIMED_OUT);
    }
  }

  std::mutex mutex_;
  std::condition_variable_any stopped_;
  std::jthread thread_;
};

/// The session: what a program does from finding a camera to closing it, with every code checked.
class TSession
{
public:
  explicit TSession(int waitMs) : waitMs_(waitMs) {}

  void Run()
  {
    Check("GetAvailableCameras", [this] { return GetAvailableCameras(&long_); });
    Check("SetCurrentCamera", [] { return SetCurrentCamera(101); });
    isOpen_ = Check("Initialize", [] { return Initialize(nullptr); }) == RC_SUCCESS;
    Settings();
    ReadOut();
    Description();
    Series();
    UntilAborted();
    Accumulated();
    Check("FreeInternalMemory", [] { return FreeInternalMemory(); });
    Check("ShutDown", [] { return ShutDown(); });
  }

  /// The calls that did not answer success.
  const std::string& Refused() const { return refused_; }

private:
  template <class Call>
  unsigned int Check(const char* name, Call call)
  {
    const std::string_view text(name);
    const bool isControl = text == "StartAcquisition" || text == "AbortAcquisition" || text == "ShutDown";
    std::optional<TWaitShortener> shortener;
    if (isControl) shortener.emplace();
    const auto start = std::chrono::steady_clock::now();
    const unsigned int code = call();
    const auto time = std::chrono::steady_clock::now() - start;
    EXPECT_TRUE(IsDocumented(name, code)) << name << " answered " << code;
    const auto longest = isControl ? kMaxControlCall : kMaxCall;
    EXPECT_LT(time, longest + std::chrono::milliseconds(waitMs_)) << name;
    if (code != RC_SUCCESS) refused_ += std::string(name) + " ";
    return code;
  }

  // Calls on the camera; on one that could not be opened they must say so.
  template <class Call>
  unsigned int OnCamera(const char* name, Call call)
  {
    const unsigned int code = Check(name, call);
    EXPECT_EQ(code == RC_NOT_INITIALIZED, !isOpen_) << name << " answered " << code;
    return code;
  }

  void Settings()
  {
    OnCamera("GetDetector", [this] { return GetDetector(&int_, &int_); });
    OnCamera("SetMetaData", [] { return SetMetaData(1); });
    OnCamera("SetReadMode", [] { return SetReadMode(4); });
    OnCamera("SetTriggerMode", [] { return SetTriggerMode(0); });
    OnCamera("SetOverlapMode", [] { return SetOverlapMode(0); });
    OnCamera("SetExposureTime", [] { return SetExposureTime(0.0001F); });
    OnCamera("SetKineticCycleTime", [] { return SetKineticCycleTime(0.001F); });
    OnCamera("GetAcquisitionTimings", [this] { return GetAcquisitionTimings(&float_, &float_, &float_); });
    OnCamera("GetReadOutTime", [this] { return GetReadOutTime(&float_); });
    OnCamera("GetMaximumExposure", [this] { return GetMaximumExposure(&float_); });
  }

  void ReadOut()
  {
    OnCamera("SetImage", [] { return SetImage(1, 1, 1, 16, 1, 8); });
    // These two succeed without a camera.
    Check("SetADChannel", [] { return SetADChannel(0); });
    Check("GetBitDepth", [this] { return GetBitDepth(0, &int_); });
    OnCamera("SetOutputAmplifier", [] { return SetOutputAmplifier(1); });
    OnCamera("GetNumberHSSpeeds", [this] { return GetNumberHSSpeeds(0, 0, &int_); });
    OnCamera("GetHSSpeed", [this] { return GetHSSpeed(0, 0, 0, &float_); });
    OnCamera("SetHSSpeed", [] { return SetHSSpeed(0, 1); });
    OnCamera("GetNumberPreAmpGains", [this] { return GetNumberPreAmpGains(&int_); });
    OnCamera("GetPreAmpGain", [this] { return GetPreAmpGain(1, &float_); });
    OnCamera("GetPreAmpGainText", [this] { return GetPreAmpGainText(1, text_.data(), 30); });
    OnCamera("IsPreAmpGainAvailable", [this] { return IsPreAmpGainAvailable(0, 0, 0, 0, &int_); });
    OnCamera("SetPreAmpGain", [] { return SetPreAmpGain(1); });
    OnCamera("SetBaselineClamp", [] { return SetBaselineClamp(1); });
    OnCamera("GetBaselineClamp", [this] { return GetBaselineClamp(&int_); });
    OnCamera("GetFIFOUsage", [this] { return GetFIFOUsage(&int_); });
  }

  void Description()
  {
    OnCamera("GetTemperatureRange", [this] { return GetTemperatureRange(&int_, &int_); });
    OnCamera("SetTemperature", [] { return SetTemperature(0); });
    OnCamera("CoolerON", CoolerON);
    OnCamera("IsCoolerOn", [this] { return IsCoolerOn(&int_); });
    OnCamera("GetTemperatureF", [this] { return GetTemperatureF(&float_); });
    OnCamera("GetTemperatureStatus", [this] { return GetTemperatureStatus(&float_, &float_, &float_, &float_); });
    OnCamera("SetFanMode", [] { return SetFanMode(0); });
    vxmcd_Capabilities capabilities{};
    capabilities.size = sizeof capabilities;
    OnCamera("GetCapabilities", [&] { return GetCapabilities(&capabilities); });
    unsigned int version[6] = {};
    OnCamera("GetHardwareVersion", [&] {
      return GetHardwareVersion(version, version + 1, version + 2, version + 3, version + 4, version + 5);
    });
    OnCamera("GetCameraSerialNumber", [this] { return GetCameraSerialNumber(&int_); });
    OnCamera("GetHeadModel", [this] { return GetHeadModel(text_.data()); });
    OnCamera("GetPixelSize", [this] { return GetPixelSize(&float_, &float_); });
    unsigned char bytes[4] = {};
    OnCamera("I2CBurstRead", [&] { return I2CBurstRead(kThermometer, 2, bytes); });
  }

  void Series()
  {
    OnCamera("SetAcquisitionMode", [] { return SetAcquisitionMode(kModeSeries); });
    OnCamera("SetNumberKinetics", [] { return SetNumberKinetics(kSeriesImages); });
    if (OnCamera("StartAcquisition", StartAcquisition) != RC_SUCCESS) return;
    TakeFrames(kSeriesImages);
    OnCamera("GetAcquiredData16", [this] { return GetAcquiredData16(data16_.data(), kCounterPixels); });
    OnCamera("vxsys_GetRawMetaDataInfo", [this] { return vxsys_GetRawMetaDataInfo(&unsigned_, &ticks_, 0); });
    Retrieve();
  }

  void UntilAborted()
  {
    OnCamera("SetAcquisitionMode", [] { return SetAcquisitionMode(kModeUntilAborted); });
    if (OnCamera("StartAcquisition", StartAcquisition) != RC_SUCCESS) return;
    OnCamera("SetExposureTime", [] { return SetExposureTime(0.0001F); });
    TakeFrames(kSeriesImages);
    // A run that could not be ended writes over images while they are copied, which ThreadSanitizer takes for a race.
    if (OnCamera("AbortAcquisition", AbortAcquisition) == RC_SUCCESS) Retrieve();
  }

  // Two exposures an image, with the wider pixels that go with it.
  void Accumulated()
  {
    OnCamera("SetNumberAccumulations", [] { return SetNumberAccumulations(2); });
    OnCamera("SetAcquisitionMode", [] { return SetAcquisitionMode(2); });
    OnCamera("SetAccumulationCycleTime", [] { return SetAccumulationCycleTime(0.001F); });
    if (OnCamera("StartAcquisition", StartAcquisition) != RC_SUCCESS) return;
    TakeFrames(1);
    OnCamera("GetAcquiredData", [this] { return GetAcquiredData(data32_.data(), kCounterPixels); });
  }

  void TakeFrames(int count)
  {
    while (Images() < count) {
      const auto wait = [this] { return WaitForAcquisitionTimeOut(waitMs_); };
      if (OnCamera("WaitForAcquisitionTimeOut", wait) != RC_SUCCESS) break;
    }
    int status = 0;
    OnCamera("GetStatus", [&status] { return GetStatus(&status); });
    EXPECT_TRUE(status == RC_IDLE || status == RC_ACQUIRING || status == RC_STATUS_TIMED_OUT ||
                status == RC_STATUS_HARDWARE_OVERFLOW)
        << "status " << status;
    OnCamera("GetAcquisitionProgress", [this] { return GetAcquisitionProgress(&long_, &long_); });
  }

  void Retrieve()
  {
    OnCamera("GetOldestImage16", [this] { return GetOldestImage16(data16_.data(), kCounterPixels); });
    OnCamera("GetMostRecentImage", [this] { return GetMostRecentImage(data32_.data(), kCounterPixels); });
    int first = 1;
    int last = 1;
    OnCamera("GetNumberAvailableImages", [&] { return GetNumberAvailableImages(&first, &last); });
    OnCamera("GetImages16",
             [=, this] { return GetImages16(first, last, data16_.data(), kCounterPixels, &long_, &long_); });
  }

  static long Images()
  {
    long count = 0;
    GetTotalNumberImagesAcquired(&count);
    return count;
  }

  const int waitMs_;
  bool isOpen_ = false;
  std::string refused_;
  long long_ = 0;
  int int_ = 0;
  unsigned int unsigned_ = 0;
  float float_ = 0;
  long long ticks_ = 0;
  std::array<char, 4096> text_{};
  std::array<unsigned short, kCounterPixels * kMaxImages> data16_{};
  std::array<int, kCounterPixels * kMaxImages> data32_{};
};

/// A call of the session: the n-th of its function on its feature.
struct TPosition
{
  std::string call; ///< as fault rules name it
  std::string function;
  int ordinal;
};

// Log lines are "function [feature] [value] -> code"; values are numbers wherever there is no feature.
std::vector<TPosition> PositionsOf(const std::vector<std::string>& lines)
{
  std::vector<TPosition> positions;
  std::map<std::string, int> counts;
  for (const std::string& line : lines) {
    std::istringstream words(line);
    std::string function;
    std::string second;
    words >> function >> second;
    std::string call = "call " + function;
    if (std::isalpha(static_cast<unsigned char>(second[0]))) call += " feature " + second;
    positions.push_back({call, function, ++counts[call]});
  }
  return positions;
}

// Faults that lose frames make the session wait; those positions get fewer codes.
bool CostsTime(const TPosition& position)
{
  for (const char* word : {"VX_WaitBuffer", "AcquisitionSt", "VX_QueueBuffer", "VX_InitialiseLibrary", "VX_Open"})
    if (position.call.find(word) != std::string::npos) return true;
  return false;
}

// Every code would be too slow: these are other ones at each position, so that all of them are used.
std::vector<int> CodesFor(const TPosition& position, std::size_t index)
{
  const std::size_t some = kHasSanitizer ? 2 : CostsTime(position) ? 3 : 5;
  std::vector<int> codes;
  for (std::size_t i = 0; i < some; ++i) codes.push_back(kCodes[(index * some + i) % kCodes.size()]);
  return codes;
}

} // namespace

class FaultSweep : public CounterCameraTest
{
protected:
  // Frames come at once, so that no time passes unless a fault makes it pass.
  FaultSweep() : CounterCameraTest(kFreeCounterCamera) {}

  /// Runs the session with one fault planned, and a clean session directly afterwards.
  static void RunWithFault(const std::string& rule, bool closesForSure)
  {
    SCOPED_TRACE(rule);
    VXSIM_ClearFaults();
    AddFault(kFiveSlots);
    AddFault(rule.c_str());
    TSession(kShortWaitMs).Run();

    VXSIM_ClearFaults();
    if (closesForSure) {
      EXPECT_EQ(VXSIM_GetOpenCount(), 0);
      EXPECT_EQ(VXSIM_GetInitialiseCount(), 0);
    } else {
      VXSIM_Configure(kFreeCounterCamera); // the very calls that close were made to do nothing
    }
    RunCleanSession();
  }

  static void RunCleanSession()
  {
    AddFault(kFiveSlots);
    ASSERT_EQ(SetCurrentCamera(101), RC_SUCCESS);
    ASSERT_EQ(Initialize(nullptr), RC_SUCCESS);
    StartSeries(kCleanImages);
    while (ImageCount() < kCleanImages) ASSERT_EQ(WaitForAcquisitionTimeOut(kLongWaitMs), RC_SUCCESS);
    for (std::uint64_t frame = 1; frame <= kCleanImages; ++frame) {
      TCounterImage image{};
      ASSERT_EQ(GetOldestImage16(image.data(), image.size()), RC_SUCCESS);
      ASSERT_EQ(FrameNumberOf(image), frame);
    }
    ASSERT_EQ(ShutDown(), RC_SUCCESS);
    ASSERT_EQ(VXSIM_GetOpenCount(), 0);
    ASSERT_EQ(VXSIM_GetInitialiseCount(), 0);
  }

  /// The calls of a session without a fault.
  static std::vector<TPosition> RecordSession()
  {
    AddFault(kFiveSlots);
    VXSIM_StartCallLog(0);
    TSession session(kLongWaitMs);
    session.Run();
    VXSIM_StopCallLog();
    EXPECT_EQ(session.Refused(), "GetTemperatureF "); // which answers the state of the cooling

    std::vector<std::string> lines;
    for (std::size_t index = 0; index < VXSIM_GetCallCount(); ++index) {
      char line[256] = {};
      VXSIM_GetCall(index, line, sizeof line);
      if (!std::string(line).starts_with("VX_QueueBuffer")) lines.emplace_back(line);
    }
    std::vector<TPosition> positions = PositionsOf(lines);
    // The frame path makes another number of calls in every session.
    for (const int ordinal : {1, 2, 3, 4, 5, 6, 10, 50})
      positions.push_back({"call VX_WaitBuffer", "VX_WaitBuffer", ordinal});
    // The slots of the series, those of the run until abort, the first that go back to the camera.
    constexpr int kSeriesSlots = kSeriesImages + kFiveSlotsCount;
    for (const int ordinal : {1, 2, kSeriesSlots / 2, kSeriesSlots, kSeriesSlots + 1,
                              kSeriesSlots + kFiveSlotsCount, kSeriesSlots + kFiveSlotsCount + 1, 20})
      positions.push_back({"call VX_QueueBuffer", "VX_QueueBuffer", ordinal});
    return positions;
  }
};

TEST_F(FaultSweep, NoFailingCallCrashesHangsOrSpoilsTheNextSession)
{
  const std::vector<TPosition> positions = RecordSession();
  ASSERT_GT(positions.size(), 100U);
  const int threads = ThreadCount();
  const int descriptors = DescriptorCount();

  int injectedRuns = 0;
  for (std::size_t index = 0; index < positions.size() && !HasFailure(); ++index) {
    const TPosition& position = positions[index];
    const bool closesForSure = position.function != "VX_Close" && position.function != "VX_FinaliseLibrary";
    for (const int code : CodesFor(position, index)) {
      for (const char* when : {" at ", " from "}) {
        std::ostringstream rule;
        rule << position.call << when << position.ordinal << " rc " << code;
        RunWithFault(rule.str(), closesForSure);
        ++injectedRuns;
      }
    }
  }
  EXPECT_EQ(ThreadCount(), threads);
  EXPECT_EQ(DescriptorCount(), descriptors);
  std::printf("%d injected runs at %zu positions\n", injectedRuns, positions.size());
  RecordProperty("injectedRuns", injectedRuns);
}
