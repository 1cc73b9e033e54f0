/* SPDX-License-Identifier: MIT */
/* The classic cycle in C: open a camera, set it up, take a series image by image, close it. */
#include "vxmcd.h"

#include <stdio.h>
#include <stdlib.h>

#define IMAGES 5
#define WAIT_MS 200

/* Prints what failed and returns 0, so that calls can be chained with &&. */
static int Check(const char* function, unsigned int code)
{
  if (code == RC_SUCCESS) return 1;
  fprintf(stderr, "%s: %u %s: %s\n", function, code, vxmcd_GetResultName(code), vxmcd_GetResultMeaning(code));
  return 0;
}

static int SetUp(void)
{
  return Check("SetReadMode", SetReadMode(4)) && Check("SetTriggerMode", SetTriggerMode(0)) &&
         Check("SetNumberKinetics", SetNumberKinetics(IMAGES)) &&
         Check("SetAcquisitionMode", SetAcquisitionMode(3)) && Check("SetExposureTime", SetExposureTime(0.01F)) &&
         Check("SetKineticCycleTime", SetKineticCycleTime(0.05F));
}

static double Mean(const unsigned short* pixels, unsigned long count)
{
  double sum = 0.0;
  for (unsigned long i = 0; i < count; ++i) sum += pixels[i];
  return sum / (double)count;
}

/* Takes every image as it comes. A wait without a limit could last longer than the run, so each wait is short, and the
   status says when no more images will come. */
static int TakeImages(unsigned short* pixels, unsigned long size)
{
  int taken = 0;
  int status = (int)RC_ACQUIRING;
  double sum = 0.0;
  while (status == (int)RC_ACQUIRING) {
    WaitForAcquisitionTimeOut(WAIT_MS);
    if (!Check("GetStatus", GetStatus(&status))) return 0;
    unsigned int code = RC_SUCCESS;
    while ((code = GetOldestImage16(pixels, size)) == RC_SUCCESS) {
      sum += Mean(pixels, size);
      ++taken;
    }
    if (code != RC_NO_NEW_DATA) return Check("GetOldestImage16", code);
  }
  if (status != (int)RC_IDLE) return Check("the run", (unsigned int)status);
  printf("%d of %d images, mean level %.1f\n", taken, IMAGES, taken > 0 ? sum / taken : 0.0);
  return taken == IMAGES;
}

int main(void)
{
  int width = 0;
  int height = 0;
  int isDone = 0;
  if (!Check("Initialize", Initialize(NULL))) return EXIT_FAILURE;
  if (Check("GetDetector", GetDetector(&width, &height)) && SetUp()) {
    const unsigned long size = (unsigned long)width * (unsigned long)height;
    unsigned short* pixels = malloc(size * sizeof *pixels);
    isDone = pixels && Check("StartAcquisition", StartAcquisition()) && TakeImages(pixels, size);
    free(pixels);
  }
  return Check("ShutDown", ShutDown()) && isDone ? EXIT_SUCCESS : EXIT_FAILURE;
}
