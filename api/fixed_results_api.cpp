// SPDX-License-Identifier: MIT
// The functions that do nothing but return a code, from their table.
//
// Nothing is known of the arguments that programs pass to most of them, so they take any. The caller removes its
// arguments itself on every platform we build for; arguments that are ignored cost nothing.
#undef VXMCD_WITHOUT_FIXED_RESULTS
#include "utility/exports.h"
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

} // namespace

#define FIXED_RESULT(name, code, reason)                                                                          \
  unsigned int name(...)                                                                                          \
  {                                                                                                               \
    return code;                                                                                                  \
  }
#define FIXED_RESULT_TYPED(name, arguments, symbol, code, reason)                                                 \
  unsigned int name arguments                                                                                     \
  {                                                                                                               \
    return code;                                                                                                  \
  }                                                                                                               \
  VXMCD_PLAIN_NAME(name, symbol);
// The header gives the function a name of its own, and with it the symbol.
#define FIXED_RESULT_TYPED_ONLY(name, arguments, symbol, code, reason)                                            \
  unsigned int name##Decorated arguments                                                                          \
  {                                                                                                               \
    return code;                                                                                                  \
  }
// Defined under a name of its own, because the header lets callers pass whatever they have in front of the output.
// Outputs are counted without floating-point arguments: each other argument takes one register of the kind that
// they are found in, and floating-point ones take none of it.
#define FIXED_VALUE(name, parameters, outputs, type, fixed, code, reason)                                         \
  extern "C" VXMCD_API unsigned int Define##name parameters __asm__(#name);                                       \
  unsigned int Define##name parameters                                                                            \
  {                                                                                                               \
    TFixedValue<type>{fixed} outputs;                                                                             \
    return code;                                                                                                  \
  }
#include "api/fixed_results.def"
