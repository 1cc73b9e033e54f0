// SPDX-License-Identifier: MIT
// The functions of the library, to be called by name: from the table that the trace is recorded with.
#include "tools/replay/ReplayFunctions.h"

#include "trace/record_contents.h"
#include "vxmcd.h"

#include <bit>
#include <map>
#include <type_traits>
#include <utility>

namespace vxtool {

namespace {

template <class T>
T ArgumentOf(std::uint64_t value)
{
  // NOLINTBEGIN(performance-no-int-to-ptr): it was made of a pointer
  if constexpr (std::is_reference_v<T>)
    return *reinterpret_cast<std::remove_reference_t<T>*>(value);
  else if constexpr (std::is_pointer_v<T>)
    return reinterpret_cast<T>(value);
  else if constexpr (std::is_floating_point_v<T>)
    return static_cast<T>(std::bit_cast<double>(value));
  else
    return static_cast<T>(value);
  // NOLINTEND(performance-no-int-to-ptr)
}

template <class T>
constexpr std::size_t TargetBytes()
{
  using Target = std::remove_pointer_t<std::remove_reference_t<T>>;
  if constexpr (std::is_arithmetic_v<T> || std::is_void_v<Target> || std::is_function_v<Target>)
    return 0;
  else
    return sizeof(Target);
}

template <class Result, class... Parameters>
struct TCaller
{
  static constexpr std::size_t kTargetBytes[sizeof...(Parameters) + 1] = {TargetBytes<Parameters>()...};

  template <Result (*function)(Parameters...)>
  static std::uint64_t Call(const std::uint64_t* values)
  {
    return Call<function>(values, std::index_sequence_for<Parameters...>());
  }

private:
  template <Result (*function)(Parameters...), std::size_t... index>
  static std::uint64_t Call([[maybe_unused]] const std::uint64_t* values, std::index_sequence<index...> /*all*/)
  {
    if constexpr (std::is_void_v<Result>) {
      function(ArgumentOf<Parameters>(values[index])...);
      return 0;
    } else {
      return TraceValue(function(ArgumentOf<Parameters>(values[index])...));
    }
  }
};

template <class Result, class... Parameters>
TCaller<Result, Parameters...> CallerOf(Result (*)(Parameters...));

template <auto function>
TReplayFunction Made(const char* signature)
{
  using Caller = decltype(CallerOf(function));
  return {TTraceSignature::Parse(signature).value_or(TTraceSignature()), Caller::template Call<function>,
          Caller::kTargetBytes};
}

// They ignore their arguments, or write to what these point to, and so can be called with any.
#define FIXED_RESULT(name, code, reason)                                                                          \
  extern "C" unsigned int Fixed##name(std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t) __asm__(#name);
#define FIXED_RESULT_TYPED(name, arguments, symbol, code, reason) FIXED_RESULT(name, code, reason)
#define FIXED_RESULT_TYPED_ONLY(name, arguments, symbol, code, reason) FIXED_RESULT(symbol, code, reason)
#define FIXED_VALUE(name, parameters, outputs, type, value, code, reason) FIXED_RESULT(name, code, reason)
#include "api/fixed_results.def"

template <auto function>
TReplayFunction MadeFixed(bool writesFixedValue)
{
  TReplayFunction made = Made<function>("unused first:u64 second:u64 third:u64 fourth:u64");
  made.writesFixedValue = writesFixedValue;
  return made;
}

std::map<std::string, TReplayFunction> MadeFunctions()
{
  std::map<std::string, TReplayFunction> functions;
#define ENTRY_POINT(name, parameters, arguments, signature) functions[#name] = Made<&::name>(signature);
#define ENTRY_POINT_DECORATED ENTRY_POINT
#define ENTRY_FUNCTION(result, name, parameters, arguments, signature) functions[#name] = Made<&::name>(signature);
#define ENTRY_FUNCTION_DECORATED ENTRY_FUNCTION
#define OUTSIDE_FUNCTION(name, signature) functions[#name] = Made<&::name>(signature);
#include "api/entry_points.def"
#define FIXED_RESULT(name, code, reason) functions[#name] = MadeFixed<Fixed##name>(false);
#define FIXED_RESULT_TYPED(name, arguments, symbol, code, reason) FIXED_RESULT(name, code, reason)
#define FIXED_RESULT_TYPED_ONLY(name, arguments, symbol, code, reason)                                            \
  functions[#name "Decorated"] = MadeFixed<Fixed##symbol>(false);
#define FIXED_VALUE(name, parameters, outputs, type, value, code, reason)                                         \
  functions[#name] = MadeFixed<Fixed##name>(true);
#include "api/fixed_results.def"
  return functions;
}

} // namespace

const TReplayFunction* FindReplayFunction(const std::string& name)
{
  static const std::map<std::string, TReplayFunction> functions = MadeFunctions();
  const auto found = functions.find(name);
  return found == functions.end() ? nullptr : &found->second;
}

} // namespace vxtool
