// SPDX-License-Identifier: MIT
// The functions that do nothing but return a code, from their table.
//
// The arguments that programs pass to most of them are unknown, so they take any. On every platform that we build for
// the caller removes its arguments, so that ignored ones cost nothing.
#undef VXMCD_WITHOUT_FIXED_RESULTS
#include "api/traced_functions.h"
#include "trace/TCallRecord.h"
#include "utility/exports.h"
#include "utility/TUnusedCall.h"
#include "vxmcd.h"

#include <cstring>

namespace {

/// Writes one value to outputs of a type that only the caller knows; a null output is ignored.
template <class T>
struct TFixedValue
{
  T value;

  template <class... Outputs>
  void operator()(Outputs... outputs) const
  {
    for (void* const output : {outputs...})
      if (output) std::memcpy(output, &value, sizeof value);
  }
};

/// The record of a call, of which nothing but the code and the registers is known.
[[gnu::noinline, gnu::cold]] void RecordCall(std::uint16_t number, unsigned int code, std::uint64_t first,
                                             std::uint64_t second, std::uint64_t third,
                                             std::uint64_t fourth) noexcept
{
  const std::uint64_t registers[] = {first, second, third, fourth};
  TCallRecord(number, registers).End(code);
}

constexpr const char* ResultText(unsigned int code)
{
  switch (code) {
#define ROW(name, number, meaning, advice)                                                                        \
  case number:                                                                                                    \
    return #number " " #name;
    VXMCD_RESULT_CODES(ROW)
#undef ROW
  default:
    return "";
  }
}

} // namespace

// Programs call these functions through pointers of the types that the header declares, and of others.
#ifdef __clang__
#define CALLED_WITH_ANYTHING __attribute__((no_sanitize("function")))
#else
#define CALLED_WITH_ANYTHING
#endif

#define FIXED_REASON(reason, text) static constexpr const char* k##reason = text;
// The body of each function.
#define ANSWER(name, number, code, reason, ...)                                                                   \
  static constinit TUnusedCall call(#name, ResultText(code), k##reason);                                          \
  call.Note();                                                                                                    \
  if (Trace::IsOn(Trace::kApi)) [[unlikely]]                                                                      \
    RecordCall(FunctionNumber::number, code, __VA_ARGS__);                                                        \
  return code;
// Whatever a program passes, the first arguments that are no floating-point numbers are in these registers, which the trace
// may record. The header declares other arguments, so that the function is defined under another name.
#define ANSWER_ANY(defined, symbol, name, number, code, reason)                                                   \
  extern "C" VXMCD_API CALLED_WITH_ANYTHING unsigned int defined(std::uint64_t, std::uint64_t, std::uint64_t,     \
                                                                 std::uint64_t) __asm__(symbol);                  \
  unsigned int defined(std::uint64_t first, std::uint64_t second, std::uint64_t third, std::uint64_t fourth)      \
  {                                                                                                               \
    ANSWER(name, number, code, reason, first, second, third, fourth)                                              \
  }
#define FIXED_RESULT(name, code, reason) ANSWER_ANY(Define##name, #name, name, name, code, reason)
#define FIXED_RESULT_TYPED(name, arguments, symbol, code, reason)                                                 \
  ANSWER_ANY(Define##name, #symbol, name, name, code, reason) VXMCD_PLAIN_NAME(name, symbol);
// The plain name is another function.
#define FIXED_RESULT_TYPED_ONLY(name, arguments, symbol, code, reason)                                            \
  ANSWER_ANY(Define##name##Decorated, #symbol, name, name##Decorated, code, reason)
// By the header callers may pass anything before the output. The position of an output does not count floating-point
// arguments, which are passed in other registers.
// NOLINTBEGIN(bugprone-macro-parentheses): a list of arguments has its parentheses
#define FIXED_VALUE(name, parameters, outputs, type, fixed, code, reason)                                         \
  extern "C" VXMCD_API CALLED_WITH_ANYTHING unsigned int Define##name(void*, void*, void*, void*,                 \
                                                                      void*) __asm__(#name);                      \
  unsigned int Define##name(void* first, void* second, void* third, void* fourth, [[maybe_unused]] void* fifth)   \
  {                                                                                                               \
    TFixedValue<type>{fixed} outputs;                                                                             \
    ANSWER(name, name, code, reason, TraceValue(first), TraceValue(second), TraceValue(third),                    \
           TraceValue(fourth))                                                                                    \
  }
// NOLINTEND(bugprone-macro-parentheses)
#include "api/fixed_results.def"
