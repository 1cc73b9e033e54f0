// SPDX-License-Identifier: MIT
// Starts runs in child processes and ends those in the middle of the run: by returning from main, exit(), _exit(),
// or after unloading the library. Every child must end cleanly, whatever the acquisition thread is doing just
// then.
#include "vxcore_simulator.h"
#include "vxmcd.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kChildren = 20;

bool StartsRun()
{
  // With noise, so that the cameras use what they share.
  VXSIM_Configure(
      "[Simulator]\nCameras=2\n[Camera0]\nModel=RQ512_LX\nClock=free\n[Camera1]\nModel=RQ512_LX\nClock=free\n");
  if (vxmcd_SetIndependentCameras(1) != RC_SUCCESS) return false;
  for (long handle = 101; handle <= 102; ++handle) {
    if (SetCurrentCamera(handle) != RC_SUCCESS || Initialize(nullptr) != RC_SUCCESS) return false;
    if (SetAcquisitionMode(5) != RC_SUCCESS || StartAcquisition() != RC_SUCCESS) return false;
    if (WaitForAcquisitionTimeOut(10000) != RC_SUCCESS) return false;
  }
  return true;
}

int EndInARun(const std::string& way)
{
  if (!StartsRun()) return 3;
  if (way == "exit") std::exit(0);
  if (way == "quick") _exit(0);
  if (way == "unload") {
    void* const library = dlopen(LIBRARY_PATH, RTLD_NOW | RTLD_NOLOAD);
    if (!library || dlclose(library) != 0) return 4;
  }
  return 0;
}

} // namespace

int main(int argc, char** argv)
{
  if (argc == 3 && std::strcmp(argv[2], "child") == 0) return EndInARun(argv[1]);
  if (argc != 2) return 2;

  char child[] = "child";
  char* arguments[] = {argv[0], argv[1], child, nullptr};
  for (int number = 0; number < kChildren; ++number) {
    pid_t process = 0;
    int status = -1;
    if (posix_spawn(&process, "/proc/self/exe", nullptr, nullptr, arguments, environ) != 0) return 2;
    waitpid(process, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
      std::printf("child %d of '%s' ended with status %#x\n", number, argv[1], static_cast<unsigned int>(status));
      return 1;
    }
  }
  std::printf("%d children ended cleanly\n", kChildren);
  return 0;
}
