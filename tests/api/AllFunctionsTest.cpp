// SPDX-License-Identifier: MIT
// Every exported function without a camera, with one, and during a run: none crashes, and each answers as documented.
#include "tests/support/CounterCameraTest.h"
#include "tests/support/DocumentedCodes.h"

#include <array>
#include <climits>
#include <functional>
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
    const unsigned int code = function.call(number, room);
    EXPECT_TRUE(!function.hasCode || IsDocumented(function.name, code))
        << code << " " << vxmcd_GetResultName(code);
    return code;
  }
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
}

// Cameras with the direct and with the simple gain control.
INSTANTIATE_TEST_SUITE_P(, AllFunctions,
                         ::testing::Combine(::testing::Values(State::NoCamera, State::Open, State::Running),
                                            ::testing::Values("RQ512_LX", "TRELLIS CMOS")),
                         [](const auto& row) { return "Case" + std::to_string(row.index); });
