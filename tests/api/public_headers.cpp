// SPDX-License-Identifier: MIT
// A C++ program that sees every function through the public headers. It needs no camera.
#include "vxcore.h"
#include "vxcore_simulator.h"
#include "vxmcd.h"
#include "vxmcd_plugins.h"

#include <cstdio>

static_assert(__cplusplus == EXPECTED_STANDARD, "this program is compiled as the C++ that it is for");
static_assert(RC_IDLE == 20073, "result codes are numbers that programs know");
static_assert(sizeof(int) == 4 && sizeof(long) == 8 && sizeof(long long) == 8, "as the library was built");
static_assert(sizeof(vxmcd_Capabilities) == 48, "the record is twelve words");

namespace {

int failures = 0;

void Expect(unsigned int expected, unsigned int code, const char* call)
{
  if (code == expected) return;
  std::printf("%s returned %u, not %u\n", call, code, expected);
  ++failures;
}

template <class... Arguments>
unsigned int CallWithZeros(unsigned int (*function)(Arguments...))
{
  return function(Arguments()...);
}

} // namespace

int main()
{
  long handle = 0;
  int pixel = 0;
  int output = 0;
  std::wstring trigger;
  Expect(RC_SUCCESS, GetCurrentCamera(&handle), "GetCurrentCamera");
  Expect(101, static_cast<unsigned int>(handle), "handle");
  Expect(RC_NOT_INITIALIZED, GetOldestImage(&pixel, 1), "GetOldestImage");
  Expect(RC_NOT_INITIALIZED, ShutDown(), "ShutDown");
  Expect(RC_SUCCESS, TriggerModeFeatureFinder(trigger), "TriggerModeFeatureFinder");
  Expect(RC_SUCCESS, GetNumberIO(&output), "GetNumberIO");
  Expect(RC_SUCCESS, GetQE("text", 1, &output), "GetQE");
#define FIXED_RESULT(name, code, reason) Expect(code, name(&output, 1, 2.0F, "text", nullptr), #name);
#define FIXED_RESULT_TYPED(name, arguments, symbol, code, reason) Expect(code, CallWithZeros(name), #name);
#define FIXED_RESULT_TYPED_ONLY(name, arguments, symbol, code, reason)                                            \
  Expect(code, name##Decorated(1), #symbol);                                                                      \
  Expect(RC_NOT_SUPPORTED, name(1), #name);
#include "api/fixed_results.def"
  std::printf("%d failures\n", failures);
  return failures == 0 ? 0 : 1;
}
