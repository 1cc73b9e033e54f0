// SPDX-License-Identifier: MIT
// The simulated camera that the benchmarks of acquisitions run on, through the interface and underneath it.
#include "BenchmarkCamera.h"

#include "vxcore_simulator.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sched.h>
#include <sys/mman.h>

namespace {

constexpr std::size_t kRingBytes = 300'000'000;
constexpr std::size_t kMaxSlots = 5000;
constexpr int kUntilAborted = 5;

std::size_t roundUp(std::size_t value, std::size_t multiple)
{
  return (value + multiple - 1) / multiple * multiple;
}

// As the slots of the ring lie.
std::size_t slotBytes(std::size_t frameBytes)
{
  return roundUp(frameBytes + 8, frameBytes >= 65536 ? 4096 : 64);
}

unsigned char* mapMemory(std::size_t sizeBytes)
{
  void* memory = mmap(nullptr, sizeBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  require(memory != MAP_FAILED, "memory for the baseline");
  return static_cast<unsigned char*>(memory);
}

} // namespace

void require(bool condition, const char* what)
{
  if (condition) return;
  std::fprintf(stderr, "benchmark: this failed: %s\n", what);
  std::exit(1);
}

BenchmarkCamera::BenchmarkCamera(int width, int height, const std::string& keys)
{
  const std::string configuration = "[Simulator]\nCameras=1\n[Camera0]\nModel=TRELLIS CMOS\nNoise=off\n" + keys;
  require(VXSIM_Configure(configuration.c_str()) == VX_SUCCESS, VXSIM_GetLastError());
  require(Initialize(nullptr) == RC_SUCCESS, "Initialize");
  GetSDK3Handle(&handle_);
  require(VX_SetInt(handle_, L"AOIWidth", width) == VX_SUCCESS, "AOIWidth");
  require(VX_SetInt(handle_, L"AOIHeight", height) == VX_SUCCESS, "AOIHeight");
  setUntilAborted();
}

BenchmarkCamera::~BenchmarkCamera()
{
  AbortAcquisition();
  ShutDown();
}

std::size_t BenchmarkCamera::frameBytes() const
{
  long long bytes = 0;
  require(VX_GetInt(handle_, L"ImageSizeBytes", &bytes) == VX_SUCCESS, "ImageSizeBytes");
  return static_cast<std::size_t>(bytes);
}

std::size_t BenchmarkCamera::ringSlots() const
{
  return std::min(kRingBytes / frameBytes(), kMaxSlots);
}

long BenchmarkCamera::framesSoFar() const
{
  long count = 0;
  GetTotalNumberImagesAcquired(&count);
  return count;
}

void BenchmarkCamera::setUntilAborted() const
{
  require(SetAcquisitionMode(kUntilAborted) == RC_SUCCESS, "SetAcquisitionMode");
}

void BenchmarkCamera::startUntilAborted() const
{
  setUntilAborted();
  require(StartAcquisition() == RC_SUCCESS, "StartAcquisition");
  while (framesSoFar() == 0) sched_yield();
}

void BareCamera::Unmap::operator()(unsigned char* memory) const
{
  munmap(memory, sizeBytes);
}

BareCamera::BareCamera(const BenchmarkCamera& camera)
    : handle_(camera.handle()),
      frameBytes_(static_cast<int>(camera.frameBytes())),
      slots_(camera.ringSlots()),
      slotBytes_(slotBytes(camera.frameBytes())),
      memory_(mapMemory(slots_ * slotBytes_), Unmap{slots_ * slotBytes_})
{
}

void BareCamera::queueAll()
{
  for (std::size_t slot = 0; slot < slots_; ++slot)
    require(VX_QueueBuffer(handle_, memory_.get() + slot * slotBytes_, frameBytes_) == VX_SUCCESS,
            "VX_QueueBuffer");
}

void BareCamera::start()
{
  require(VX_Command(handle_, L"AcquisitionStart") == VX_SUCCESS, "AcquisitionStart");
}

void BareCamera::stop()
{
  require(VX_Command(handle_, L"AcquisitionStop") == VX_SUCCESS, "AcquisitionStop");
  VX_Flush(handle_);
}
