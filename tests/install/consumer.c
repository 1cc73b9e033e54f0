/* SPDX-License-Identifier: MIT */
/* A user's program in C: asks the camera for its size. */
#include <vxmcd.h>

#include <stddef.h>
#include <stdio.h>

int main(void)
{
  int width = 0;
  int height = 0;
  if (Initialize(NULL) != RC_SUCCESS) return 1;
  if (GetDetector(&width, &height) != RC_SUCCESS) return 1;
  if (ShutDown() != RC_SUCCESS) return 1;
  printf("%d x %d pixels\n", width, height);
  return width > 0 && height > 0 ? 0 : 1;
}
