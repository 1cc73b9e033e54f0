/* SPDX-License-Identifier: MIT */
/* A C program that sees every function through the public headers. It needs no camera. */
#include "vxcore.h"
#include "vxcore_simulator.h"
#include "vxmcd.h"
#include "vxmcd_plugins.h"

#include <assert.h>
#include <stdio.h>

static_assert(__STDC_VERSION__ >= EXPECTED_STANDARD, "this program is compiled as the C that it is for");
static_assert(RC_SUCCESS == 20002, "result codes are numbers that programs know");
static_assert(RC_NOT_AVAILABLE == 20992, "result codes are numbers that programs know");
static_assert(sizeof(int) == 4, "numbers and flags are 32 bits");
static_assert(sizeof(long) == 8, "handles and image numbers are 64 bits");
static_assert(sizeof(long long) == 8, "ticks are 64 bits");
static_assert(sizeof(unsigned short) == 2, "pixels of 16 bits");
static_assert(sizeof(float) == 4, "times and temperatures are 32 bits");
static_assert(sizeof(void*) == 8, "pointers are 64 bits");
static_assert(sizeof(vxmcd_Capabilities) == 48, "the record is twelve words");

static int failures = 0;

static void Expect(unsigned int expected, unsigned int code, const char* call)
{
  if (code == expected) return;
  printf("%s returned %u, not %u\n", call, code, expected);
  ++failures;
}

static void CallFixedResults(void)
{
  int output = 0;
#define FIXED_RESULT(name, code, reason) Expect(code, name(&output, 1, 2.0, "text"), #name);
#define FIXED_RESULT_TYPED(name, arguments, symbol, code, reason)                                                 \
  {                                                                                                               \
    unsigned int(*const declared) arguments = name;                                                               \
    Expect(1, declared != NULL, #name);                                                                           \
  }
#define FIXED_RESULT_TYPED_ONLY(name, arguments, symbol, code, reason)                                            \
  Expect(code, name##Decorated(1), #symbol);                                                                      \
  Expect(RC_NOT_SUPPORTED, name(1), #name);
#include "api/fixed_results.def"
}

int main(void)
{
  long handle = 0;
  int value = 1;
  unsigned short pixel = 0;
  Expect(RC_SUCCESS, GetCurrentCamera(&handle), "GetCurrentCamera");
  Expect(101, (unsigned int)handle, "handle");
  Expect(RC_NOT_INITIALIZED, GetMostRecentImage16(&pixel, 1), "GetMostRecentImage16");
  Expect(RC_SUCCESS, GetNumberIO(&value), "GetNumberIO");
  Expect(0, (unsigned int)value, "its value");
  CallFixedResults();
  printf("%d failures\n", failures);
  return failures == 0 ? 0 : 1;
}
