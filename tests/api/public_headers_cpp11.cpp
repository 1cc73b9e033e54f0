// SPDX-License-Identifier: MIT
// The public headers compile as C++11.
#include "vxcore.h"
#include "vxcore_simulator.h"
#include "vxmcd.h"

static_assert(__cplusplus == 201103L, "this file is for C++11");
static_assert(RC_IDLE == 20073, "result codes are numbers that programs know");

unsigned int CallFromCpp11();
unsigned int CallFromCpp11()
{
  int pixel = 0;
  return GetOldestImage(&pixel, 1) == RC_NO_NEW_DATA ? ShutDown() : GetAcquiredData(&pixel, 1);
}
