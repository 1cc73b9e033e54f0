// SPDX-License-Identifier: MIT
// Every exported function in every state of a camera's life: none crashes, and each answers as it is documented.
#include "tests/support/CounterCameraTest.h"
#include "tests/support/DocumentedCodes.h"

#include <array>
#include <climits>
#include <functional>
#include <ostream>
#include <string_view>
#include <tuple>
#include <type_traits>

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

struct TFunction
{
  std::string name;
  bool hasCode;
  std::function<unsigned int(int number, TRoom* room)> call;
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
          }};
}

// Every function that the header declares.
const TFunction kFunctions[] = {
#define VXMCD_FUNCTION(name, ...) MakeRow(#name, name),
#include "function_rows.inc"
#undef VXMCD_FUNCTION
};

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

  /// Calls the function; where it waits for an image, the wait is over at once.
  static unsigned int CallAndExpectDocumented(const TFunction& function, int number, TRoom* room)
  {
    CancelWait();
    const unsigned int code = function.call(number, room);
    EXPECT_TRUE(!function.hasCode || IsDocumented(function.name, code))
        << code << " " << vxmcd_GetResultName(code);
    return code;
  }
};

TEST_P(AllFunctions, AnswerAsDocumented)
{
  for (const TFunction& function : kFunctions) {
    SCOPED_TRACE(function.name);
    ASSERT_NO_FATAL_FAILURE(Enter());
    TRoom room;
    const unsigned int code = CallAndExpectDocumented(function, 1, &room);
    EXPECT_EQ(code == RC_NOT_INITIALIZED, function.hasCode && NeedsCamera(function.name) && !IsOpen(TheState()));
  }
}

TEST_P(AllFunctions, SurviveNullPointersAndSenselessNumbers)
{
  for (const TFunction& function : kFunctions) {
    for (const int number : {0, 1, 2, -1, INT_MAX, INT_MIN}) {
      SCOPED_TRACE(testing::Message() << function.name << " with " << number);
      ASSERT_NO_FATAL_FAILURE(Enter());
      CallAndExpectDocumented(function, number, nullptr);
    }
  }
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
