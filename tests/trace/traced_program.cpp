// SPDX-License-Identifier: MIT
// A program to be traced: traced_program WAY [NUMBER or FILE [NUMBER]]. Each way ends it differently, or works in another way until its end.
#include "vxmcd.h"
#include "vxmcd_result_codes.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <map>
#include <pthread.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

constexpr int kCallsOfAThread = 20'000;

// Calls that say in their arguments which they are.
void Call(int count, int first = 0)
{
  for (int number = first; number < first + count; ++number) IsAmplifierAvailable(number);
}

void CallInThreads(int threadCount)
{
  std::vector<std::thread> threads;
  threads.reserve(static_cast<std::size_t>(threadCount));
  for (int i = 0; i < threadCount; ++i) threads.emplace_back([i] { Call(kCallsOfAThread, i * kCallsOfAThread); });
  for (std::thread& thread : threads) thread.join();
}

void CallInFork()
{
  Call(1, 1);
  const pid_t child = fork();
  Call(1, child == 0 ? 2 : 3);
  if (child == 0) _exit(0);
  waitpid(child, nullptr, 0);
  Call(1, 4);
}

void OnAlarm(int /*signal*/)
{
  IsAmplifierAvailable(-1);
}

// Signals come during calls, and their handler makes calls. The first call of a thread allocates, which a handler must not.
void CallUnderSignals()
{
  Call(1);
  std::signal(SIGALRM, OnAlarm);
  sigset_t alarm;
  sigemptyset(&alarm);
  sigaddset(&alarm, SIGALRM);
  pthread_sigmask(SIG_BLOCK, &alarm, nullptr); // for the other thread
  const pid_t process = getpid();
  std::thread sender([process] {
    for (int i = 0; i < 2000; ++i) kill(process, SIGALRM);
  });
  pthread_sigmask(SIG_UNBLOCK, &alarm, nullptr);
  Call(kCallsOfAThread - 1, 1);
  sender.join();
}

unsigned int Throw(void* /*context*/)
{
  throw std::runtime_error("of an observer");
}

void ThrowThroughACall(const char* potFile)
{
  Initialize(nullptr);
  vxsys_CameraPotsRegisterObserver(Throw, nullptr);
  try {
    vxsys_CameraPotsLoadFile(potFile);
  } catch (const std::runtime_error&) {
    Call(1);
  }
}

// Calls that do and do not call the feature library.
unsigned int CallOnce(void* context)
{
  int isOn = 0;
  const int count = std::exchange(*static_cast<int*>(context), 0);
  for (int number = 0; number < count; ++number) Call(1, number), IsCoolerOn(&isOn);
  return 0;
}

void CallInsideACall(const char* potFile, int count)
{
  Initialize(nullptr);
  vxsys_CameraPotsRegisterObserver(CallOnce, &count);
  vxsys_CameraPotsLoadFile(potFile);
}

unsigned int Ignore(void* /*context*/)
{
  return 0;
}

// Asks whether it is there another number of times in each run.
void TakeAnImage()
{
  int contexts[2] = {};
  Initialize(nullptr);
  vxsys_CameraPotsRegisterObserver(Ignore, &contexts[0]);
  vxsys_CameraPotsRegisterObserver(Ignore, &contexts[1]);
  vxsys_CameraPotsUnregisterObserver(&contexts[0]);
  SetShutter(11, 12, 13, 14);
  SetReadMode(4);
  SetImage(1, 1, 1, 100, 1, 80);
  SetAcquisitionMode(1);
  SetExposureTime(10.0F);
  StartAcquisition();
  SetBaselineClamp(1); // refused during the run
  int status = RC_IDLE;
  for (int i = 0; i < 3; ++i) GetStatus(&status); // asks the same again
  AbortAcquisition();
  SetExposureTime(0.001F);
  StartAcquisition();
  WaitForAcquisition();
  std::vector<unsigned short> image(std::size_t{100} * 80);
  GetAcquiredData16(image.data(), image.size());
  vxsys_CameraPotsSetPotDefaultEnable(0);
  ShutDown();
}

// Asks again for the next image, before it is there; a null array is refused.
void TakeASeries()
{
  constexpr int kImages = 2;
  Initialize(nullptr);
  GetOldestImage16(nullptr, 0);
  SetReadMode(4);
  SetImage(1, 1, 1, 100, 1, 80);
  SetAcquisitionMode(3);
  SetNumberKinetics(kImages);
  SetExposureTime(0.001F);
  SetKineticCycleTime(0.3F);
  StartAcquisition();
  std::vector<unsigned short> image(std::size_t{100} * 80);
  for (int taken = 0; taken < kImages; ++taken) {
    WaitForAcquisition();
    usleep(20'000);
    GetOldestImage16(image.data(), image.size());
    GetOldestImage16(image.data(), image.size());
  }
  ShutDown();
}

// Two threads set and read a setting in turns: in another order they read other values.
void TakeTurns()
{
  constexpr int kTurns = 400;
  Initialize(nullptr);
  std::atomic<int> turn{0};
  const auto take = [&turn](int first) {
    for (int mine = first; mine < kTurns; mine += 2) {
      while (turn < mine) std::this_thread::yield();
      float seconds[3] = {};
      if (first == 0)
        SetExposureTime(0.001F * static_cast<float>(1 + mine % 5));
      else
        GetAcquisitionTimings(&seconds[0], &seconds[1], &seconds[2]);
      turn = mine + 1;
    }
  };
  std::thread other(take, 1);
  take(0);
  other.join();
  ShutDown();
}

} // namespace

int main(int argc, char** argv)
{
  const std::string way = argc > 1 ? argv[1] : "";
  const char* const last = argc > 2 ? argv[2] : "";
  const int number = std::atoi(last);
  const std::map<std::string, std::function<void()>> ways = {
      {"crash",
       [=] {
         Call(number);
         GetVersionInfo(VXMCD_VERSION_LIBRARY, reinterpret_cast<char*>(1), 16); // no address that can be written
       }},
      {"abort", [=] { Call(number), std::abort(); }},
      {"_exit", [=] { Call(number), _exit(0); }},
      {"series", [=] { TakeASeries(); }},
      {"turns", [] { TakeTurns(); }},
      {"calls", [=] { Call(number); }},
      {"forever",
       [=] {
         std::thread([] { Call(1 << 30); }).detach();
         Call(1 << 30);
       }},
      {"threads", [=] { CallInThreads(number); }},
      {"fork", [=] { CallInFork(); }},
      {"signals", [=] { CallUnderSignals(); }},
      {"throw", [=] { ThrowThroughACall(last); }},
      {"inside", [=] { CallInsideACall(last, std::atoi(argv[3])); }},
      {"image", [] { TakeAnImage(); }},
      {"home", [=] { SetSpool(1, 3, argv[2]); }},
  };
  const auto found = ways.find(way);
  if (found == ways.end()) return 2;
  found->second();
  return 0;
}
