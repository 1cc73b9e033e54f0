/* SPDX-License-Identifier: MIT */
/* The public headers compile as C. */
#include "vxcore.h"
#include "vxcore_simulator.h"
#include "vxmcd.h"

#include <assert.h>

static_assert(RC_SUCCESS == 20002, "result codes are numbers that programs know");
static_assert(RC_NOT_AVAILABLE == 20992, "result codes are numbers that programs know");
static_assert(sizeof(long) == 8, "handles and image numbers are 64 bits");

unsigned int CallFromC(void);
unsigned int CallFromC(void)
{
  long handle = 0;
  unsigned short pixel = 0;
  if (GetCurrentCamera(&handle) != RC_SUCCESS) return RC_FEATURE_ERROR;
  return GetMostRecentImage16(&pixel, 1);
}
