// SPDX-License-Identifier: MIT
// Every exported function without a camera, with one, and during a run: none crashes, each answers as documented, the log
// explains each refusal, and the trace has a record of each call.
#include "runs/checksum.h"
#include "tests/support/CounterCameraTest.h"
#include "tests/support/DocumentedCodes.h"
#include "trace/TTraceFile.h"

#include <array>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <dlfcn.h>
#include <fstream>
#include <functional>
#include <set>
#include <string_view>
#include <sys/mman.h>
#include <tuple>
#include <type_traits>
#include <unistd.h>

namespace {

constexpr std::string_view kCounterModel = "RQ512_LX"; // of kCounterCamera
constexpr int kImages = 3;                             // of a running run

/// What every pointer of a call points to: larger than all images of a run with 32 bits a pixel.
struct TRoom
{
  alignas(std::max_align_t) std::array<std::byte, 1 << 16> bytes{};
};

/// An argument that a program may pass; without @p room null, or this number whatever it stands for.
template <class T>
T Argument(int number, TRoom* room)
{
  if constexpr (std::is_reference_v<T>) {
    static std::remove_reference_t<T> object;
    return object;
  } else if constexpr (std::is_pointer_v<T> && !std::is_function_v<std::remove_pointer_t<T>>) {
    return room ? reinterpret_cast<T>(room->bytes.data()) : nullptr;
  } else if constexpr (std::is_pointer_v<T>) {
    return nullptr;
  } else if constexpr (std::is_same_v<T, unsigned long>) { // pixels of an image
    return room ? kCounterPixels : static_cast<T>(number);
  } else if constexpr (std::is_same_v<T, long>) { // the first camera
    return room ? 101 : static_cast<T>(number);
  } else {
    return static_cast<T>(number);
  }
}

constexpr const char* kAnyPointer = "*";

/// The argument as the trace has it when the call begins.
template <class T>
std::string TracedArgument(int number, TRoom* room)
{
  if constexpr (std::is_reference_v<T>) {
    return kAnyPointer;
  } else if constexpr (std::is_pointer_v<T>) {
    return Argument<T>(number, room) ? kAnyPointer : "null";
  } else {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, Argument<T>(number, room)).ptr;
    return {text, end};
  }
}

struct TFunction
{
  std::string name;
  bool hasCode;
  std::function<unsigned int(int number, TRoom* room)> call;
  std::function<std::vector<std::string>(int number, TRoom* room)> arguments;
};

template <class Result, class... Arguments>
TFunction MakeRow(const std::string& name, Result (*function)(Arguments...))
{
  constexpr bool kHasCode = std::is_same_v<Result, unsigned int>;
  return {name, kHasCode && name.find("PrivateProfile") == std::string::npos,
          [function]([[maybe_unused]] int number, [[maybe_unused]] TRoom* room) -> unsigned int {
            if constexpr (kHasCode) return function(Argument<Arguments>(number, room)...);
            function(Argument<Arguments>(number, room)...);
            return RC_SUCCESS;
          },
          []([[maybe_unused]] int number, [[maybe_unused]] TRoom* room) {
            return std::vector<std::string>{TracedArgument<Arguments>(number, room)...};
          }};
}

// Every function that the header declares.
const TFunction kFunctions[] = {
#define VXMCD_FUNCTION(name, ...) MakeRow(#name, name),
#include "function_rows.inc"
#undef VXMCD_FUNCTION
};

// What runs when the library is loaded and unloaded is not traced.
const std::set<std::string> kLoadFunctions = {"MyInitialise", "MyFinalise", "my_init", "my_fini"};

constexpr std::string_view kLogInMemory = "debug:/proc/self/fd/";

/// The library reads VXMCD_LOG and VXMCD_TRACE when it is loaded: runs the program again, with log and trace in memory.
[[gnu::constructor]] void SwitchLogOn(int /*count*/, char** arguments)
{
  const char* const setting = std::getenv("VXMCD_LOG");
  if (setting && std::string_view(setting).starts_with(kLogInMemory)) return;
  setenv("VXMCD_LOG", (std::string(kLogInMemory) + std::to_string(memfd_create("log", 0))).c_str(), 1);
  setenv("VXMCD_TRACE", ("/proc/self/fd/" + std::to_string(memfd_create("trace", 0))).c_str(), 1);
  execv("/proc/self/exe", arguments);
}

int LogFile()
{
  const char* const setting = std::getenv("VXMCD_LOG");
  return setting ? std::atoi(setting + kLogInMemory.size()) : -1;
}

off_t LogEnd()
{
  return lseek(LogFile(), 0, SEEK_END);
}

/// What the log has from @p begin on.
std::string LoggedFrom(off_t begin)
{
  std::string text(static_cast<std::size_t>(LogEnd() - begin), '\0');
  EXPECT_EQ(pread(LogFile(), text.data(), text.size(), begin), static_cast<ssize_t>(text.size()));
  return text;
}

/// What the log says of a call, without its beginning: time, thread, level, place.
template <class Call>
std::string LogOf(Call call)
{
  const off_t begin = LogEnd();
  call();
  const std::string line = LoggedFrom(begin);
  const std::size_t place = line.find(".cpp:");
  return place == std::string::npos ? line : line.substr(line.find(' ', place) + 1);
}

TTraceFile ReadTrace()
{
  TTraceFile trace;
  EXPECT_EQ(trace.Read(std::getenv("VXMCD_TRACE")), "");
  return trace;
}

/// A call that was made, as the trace must have it.
struct TMadeCall
{
  std::string name;
  std::vector<std::string> arguments;
  unsigned int code;
};

/// Whether a record is of that call. Functions that return no code have any.
bool IsRecordOf(const TMadeCall& made, const TTraceCall& call)
{
  const auto values = call.Values();
  if (call.function->name != made.name || call.depth != 0 || call.state != CallState::Ended ||
      values.size() != made.arguments.size())
    return false;
  if (call.function->signature.Result().type == TraceType::Code && call.Code() != made.code) return false;
  const auto& arguments = call.function->signature.Arguments();
  for (std::size_t i = 0; i < values.size(); ++i) {
    const bool isPointer = made.arguments[i] == kAnyPointer;
    const bool isKnown = values[i].kind != TTraceValue::Kind::Missing;
    const bool isNull = values[i].kind == TTraceValue::Kind::Null;
    const bool isCopy = arguments[i].type == TraceType::Pixels; // nothing was copied to null
    if (!isKnown || (isPointer ? isNull : !isCopy && values[i].Text() != made.arguments[i])) return false;
  }
  return true;
}

enum class State
{
  NoCamera,
  Open,
  Running
};

} // namespace

using TCase = std::tuple<State, std::string>; ///< state and camera model

class AllFunctions : public CounterCameraTest, public ::testing::WithParamInterface<TCase>
{
protected:
  static State TheState() { return std::get<State>(GetParam()); }
  static bool IsOpen() { return TheState() != State::NoCamera; }

  /// Brings the camera into the state, unless it still is in it.
  void Enter()
  {
    int handle = -1;
    int status = 0;
    GetSDK3Handle(&handle);
    GetStatus(&status);
    if ((handle != -1) == IsOpen() && (status == RC_ACQUIRING) == (TheState() == State::Running)) return;

    ShutDown();
    std::string configuration = kCounterCamera;
    configuration.replace(configuration.find(kCounterModel), kCounterModel.size(),
                          std::get<std::string>(GetParam()));
    ASSERT_EQ(VXSIM_Configure(configuration.c_str()), VX_SUCCESS) << VXSIM_GetLastError();
    if (!IsOpen()) return;
    OpenCamera(101);
    if (TheState() == State::Open) return;
    StartUntilAborted();
    Push(kImages);
    ASSERT_TRUE(HasImages(kImages));
  }

  /// Calls the function; where it waits for an image, the wait is over at once.
  unsigned int CallAndExpectDocumented(const TFunction& function, int number, TRoom* room)
  {
    Enter();
    CancelWait();
    const off_t begin = LogEnd();
    const std::vector<std::string> arguments = function.arguments(number, room);
    const unsigned int code = function.call(number, room);
    if (kLoadFunctions.count(function.name) == 0) made_.push_back({function.name, arguments, code});
    if (function.hasCode && code != RC_SUCCESS && code != 0) {
      const std::string line = LoggedFrom(begin);
      EXPECT_NE(line.find(' ' + function.name + '('), std::string::npos) << line;
      EXPECT_NE(line.find("): " + std::to_string(code)), std::string::npos) << line;
    }
    EXPECT_TRUE(!function.hasCode || IsDocumented(function.name, code))
        << code << " " << vxmcd_GetResultName(code);
    return code;
  }

  /// Checks that the trace has a record of each of these calls, in their order.
  void ExpectRecords() const
  {
    const TTraceFile trace = ReadTrace();
    auto call = trace.Calls().begin();
    for (const TMadeCall& made : made_) {
      call =
          std::find_if(call, trace.Calls().end(), [&](const TTraceCall& next) { return IsRecordOf(made, next); });
      ASSERT_NE(call++, trace.Calls().end())
          << made.name << "(" << ::testing::PrintToString(made.arguments) << ") " << made.code;
    }
  }

private:
  std::vector<TMadeCall> made_;
};

TEST_P(AllFunctions, AnswerAsDocumentedWhateverTheyAreGiven)
{
  for (const TFunction& function : kFunctions) {
    SCOPED_TRACE(function.name);
    TRoom room;
    const unsigned int code = CallAndExpectDocumented(function, 1, &room);
    EXPECT_EQ(code == RC_NOT_INITIALIZED, function.hasCode && NeedsCamera(function.name) && !IsOpen());
    for (const int number : {0, 1, 2, -1, INT_MAX, INT_MIN}) CallAndExpectDocumented(function, number, nullptr);
    ASSERT_FALSE(HasFatalFailure());
  }
  ExpectRecords();
}

// Cameras with the direct and with the simple gain control.
INSTANTIATE_TEST_SUITE_P(, AllFunctions,
                         ::testing::Combine(::testing::Values(State::NoCamera, State::Open, State::Running),
                                            ::testing::Values("RQ512_LX", "TRELLIS CMOS")),
                         [](const auto& row) { return "Case" + std::to_string(row.index); });

class CallLog : public SimulatedCameraTest
{
protected:
  CallLog() : SimulatedCameraTest(kTwoManualCameras) {}
};

TEST_F(CallLog, SaysWhatWasAskedForAndWhatTheCameraTakes)
{
  EXPECT_EQ(LogOf([] { SetReadMode(1); }),
            "SetReadMode(1): 20075 RC_NOT_INITIALIZED: no camera is open under handle 101\n");
  OpenCamera(101);
  EXPECT_EQ(LogOf([] { SetExposureTime(60.5F); }),
            "SetExposureTime(60.5): 20066 RC_P1_INVALID: the camera refused ExposureTime 60.5 with 6 "
            "VX_ERR_OUT_OF_RANGE and takes 1e-05 to 30\n");
  EXPECT_EQ(LogOf([] { SetPreAmpGain(3); }),
            "SetPreAmpGain(3): 20002 RC_SUCCESS, although the camera refused SimplePreAmpGainControl 3 with 47 "
            "VX_ERR_INDEX_NOT_IMPLEMENTED and takes 0 \"Gain 1 (11-bit)\", 1 \"Gain 2 (11-bit)\", 2 \"Gain 1+2 "
            "(16-bit)\"\n");
  EXPECT_EQ(LogOf([] { SetHSSpeed(0, -1); }),
            "SetHSSpeed(0, -1): 20067 RC_P2_INVALID: there is no speed -1; they are 0 to 2\n");
  EXPECT_EQ(LogOf([] { GetReadOutTime(nullptr); }),
            "GetReadOutTime(null): 20066 RC_P1_INVALID: argument 1 is null\n");
  EXPECT_EQ(
      LogOf([] { GetOldestImage8(nullptr, 0); }),
      "GetOldestImage8(null, 0): 20991 RC_NOT_SUPPORTED: the camera encodes pixels as Mono16, which do not go "
      "into 8 bits\n");
  EXPECT_EQ(LogOf([] { vxsys_EEPFL(); }),
            "vxsys_EEPFL(): 20013 RC_FEATURE_ERROR: there is no configuration library of the camera\n");
  EXPECT_EQ(LogOf([] { SetReadMode(4); }), "");
}

TEST_F(CallLog, NamesASecondRunAndAnUnusedFunctionOnce)
{
  for (const long handle : {101, 102}) {
    OpenCamera(handle);
    SetAcquisitionMode(kModeUntilAborted);
    const std::string logged = LogOf([] { EXPECT_EQ(StartAcquisition(), RC_SUCCESS); });
    EXPECT_EQ(LogOf([] { SetOverlapMode(1); }),
              "SetOverlapMode(1): 20992 RC_NOT_AVAILABLE: the camera refused Overlap 1 "
              "with 5 VX_ERR_NOT_WRITABLE; the camera is acquiring\n");
    EXPECT_EQ(logged.find("camera 102 is started while camera 101 acquires") == std::string::npos, handle == 101)
        << logged;
  }
  for (const long handle : {102, 101}) {
    SetCurrentCamera(handle);
    ShutDown();
  }
  for (int time = 0; time < 2; ++time) SetEMCCDGain(5);
  const std::string whole = LoggedFrom(0);
  const std::size_t first = whole.find("SetEMCCDGain does nothing and answers 20002 RC_SUCCESS");
  EXPECT_NE(first, std::string::npos);
  EXPECT_EQ(whole.find("SetEMCCDGain", first + 1), std::string::npos);
}

namespace {

/// Calls a function of any type, which gets the value as each of its arguments, as far as they are no floating-point
/// numbers.
#if defined(__clang__)
__attribute__((no_sanitize("function")))
#endif
void CallWithAll(void* function, const void* value)
{
  using TAny = unsigned int (*)(const void*, const void*, const void*, const void*, const void*, const void*);
  reinterpret_cast<TAny>(function)(value, value, value, value, value, value);
}

} // namespace

// Each symbol, the decorated ones too, called with nulls and zeros.
TEST(TracedNames, HaveARecordOfEachCall)
{
  std::set<std::string> other = kLoadFunctions;
  std::ifstream objects(std::string(VXMCD_API_FOLDER) + "/exported_objects.txt");
  for (std::string line; std::getline(objects, line);)
    if (line.find("getSDKVersion") == std::string::npos && line.find("extractNumber") == std::string::npos)
      other.insert(line);
  for (const char* const name : {"_Z12MyInitialisev", "_Z10MyFinalisev"}) other.insert(name);

  const auto recorded = [] {
    const TTraceFile trace = ReadTrace();
    std::vector<std::string> functions;
    for (const TTraceCall& call : trace.Calls())
      if (call.function->isApi && call.depth == 0) functions.push_back(call.function->name);
    return functions;
  };
  FreeInternalMemory();                         // the first call makes the trace
  std::vector<std::string> called = recorded(); // of other tests, too
  const std::size_t before = called.size();
  std::ifstream names(std::string(VXMCD_API_FOLDER) + "/exported_names.txt");
  for (std::string symbol; std::getline(names, symbol);) {
    if (other.count(symbol) > 0) continue;
    void* const function = dlsym(RTLD_DEFAULT, symbol.c_str());
    ASSERT_NE(function, nullptr) << symbol;
    std::wstring text;
    const bool takesText = symbol.find("TriggerModeFeatureFinder") != std::string::npos;
    const bool takesReferences =
        symbol == "_Z13getSDKVersionRjS_S_S_" || symbol == "_Z23extractNumberFromStringPwRi";
    long long room[4] = {};
    const void* const argument = takesText ? static_cast<void*>(&text) : takesReferences ? room : nullptr;
    CallWithAll(function, argument);
    // _Z10GetNewDataPim is a GetNewData.
    const std::size_t digits = symbol.starts_with("_Z") ? symbol.find_first_not_of("0123456789", 2) : 0;
    called.push_back(digits == 0 ? symbol : symbol.substr(digits, std::stoul(symbol.substr(2))));
    for (const char* const twin : {"vxsys_SetChosenFilter", "vxsys_SetFrameCount", "vxsys_SetNoiseThreshold"})
      if (digits != 0 && called.back() == twin) called.back() += "Decorated";
  }
  EXPECT_GT(called.size(), before + 600U);
  EXPECT_EQ(recorded(), called);
}

class CallTrace : public CounterCameraTest
{
};

TEST_F(CallTrace, HasTheChecksumOfWhatWasCopied)
{
  OpenCamera(101);
  StartSeries(2);
  Push(2);
  ASSERT_TRUE(HasImages(2));
  std::array<TCounterImage, 2> images{};
  EXPECT_EQ(GetOldestImage16(images[0].data(), kCounterPixels), RC_SUCCESS);
  ASSERT_TRUE(Eventually([&] { return GetAcquiredData16(images[0].data(), kCounterPixels) == RC_SUCCESS; }));
  long validFirst = 0;
  long validLast = 0;
  EXPECT_EQ(GetImages16(2, 2, images[1].data(), kCounterPixels, &validFirst, &validLast), RC_SUCCESS);

  const TTraceFile trace = ReadTrace();
  std::vector<std::string> pixels;
  for (const TTraceCall& call : trace.Calls()) {
    const TTraceValue array = call.Value("array");
    if (array.kind == TTraceValue::Kind::Pixels && call.Code() == RC_SUCCESS) pixels.push_back(array.Text());
  }
  const auto textOf = [](std::uint64_t checksum) {
    TTraceValue value;
    value.kind = TTraceValue::Kind::Pixels;
    value.pixels = {sizeof(TCounterImage), checksum, 1, 0};
    return value.Text();
  };
  const std::uint64_t checksums[] = {Checksum(images[0].data(), sizeof(TCounterImage)),
                                     Checksum(images[1].data(), sizeof(TCounterImage))};
  ASSERT_EQ(pixels.size(), 3U);
  EXPECT_EQ(pixels[0], textOf(checksums[0]));
  EXPECT_NE(pixels[1].find("2 images, " + std::to_string(sizeof images) + " bytes"), std::string::npos)
      << pixels[1];
  EXPECT_EQ(pixels[2], textOf(checksums[1]));
}
