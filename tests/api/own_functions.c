/* SPDX-License-Identifier: MIT */
/* A program that has functions named like those that the library calls itself, and uses the exported data object. */
#include <stdio.h>

enum
{
  kSuccess = 20002,
  kNoNewData = 20024,
  kFirstCamera = 101,
  kSecondCamera = 102
};

extern unsigned int Initialize(char* directory);
extern unsigned int ShutDown(void);
extern unsigned int GetCameraHandle(long cameraIndex, long* handle);
extern unsigned int SetFrameTransferMode(int on);
extern unsigned int SetCurrentCamera(long handle);
extern unsigned int WaitForAcquisitionTimeOut(int timeoutMs);
extern long gblVxmcdCameraHandle;

static int ownCalls = 0;

static unsigned int OwnCall(const char* name)
{
  fprintf(stderr, "the library called the program's %s\n", name);
  ++ownCalls;
  return 0;
}

/* clang-format off */
#define OWN(name) unsigned int name(void); unsigned int name(void) { return OwnCall(#name); }
OWN(my_init)
OWN(my_fini)
OWN(MyInitialise)
OWN(MyFinalise)
OWN(createAcquisitionEvents)
OWN(SetMetaData)
OWN(AbortAcquisition)
OWN(SetOverlapMode)
OWN(_Z19GetAvailableCamerasPl)
OWN(_Z33WaitForAcquisitionByHandleTimeOutli)
/* clang-format on */

int main(void)
{
  long handle = 0;
  const int worked = gblVxmcdCameraHandle == kFirstCamera && GetCameraHandle(1, &handle) == kSuccess &&
                     handle == kSecondCamera && SetCurrentCamera(kSecondCamera) == kSuccess &&
                     gblVxmcdCameraHandle == kSecondCamera && Initialize(NULL) == kSuccess &&
                     SetFrameTransferMode(1) == kSuccess && WaitForAcquisitionTimeOut(0) == kNoNewData &&
                     ShutDown() == kSuccess;
  return worked && ownCalls == 0 ? 0 : 1;
}
