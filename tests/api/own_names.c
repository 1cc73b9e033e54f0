/* SPDX-License-Identifier: MIT */
/* A program that defines functions with names of some of those that do nothing. */
#define VXMCD_WITHOUT_FIXED_RESULTS
#include "vxmcd.h"

static int Merge(int a, int b)
{
  return a + b;
}

static double Park(double position)
{
  return -position;
}

int main(void)
{
  long handle = 0;
  return GetCurrentCamera(&handle) == RC_SUCCESS && Merge(1, 2) == 3 && Park(1) < 0 ? 0 : 1;
}
