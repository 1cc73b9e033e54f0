// SPDX-License-Identifier: MIT
// The simulated camera that the benchmarks of acquisitions run on, through the interface and underneath it.
#pragma once

#include "vxcore.h"
#include "vxmcd.h"

#include <cstddef>
#include <memory>
#include <string>

/// Ends the program when a call does not answer as it must: figures of a run that went wrong are worth nothing.
void require(bool condition, const char* what);

/// The current camera, open while the object lives: a simulated one that makes frames as fast as buffers come and
/// takes next to no time for it. One at a time.
class BenchmarkCamera
{
public:
  /// @p keys are more lines of the camera's section of the configuration.
  BenchmarkCamera(int width, int height, const std::string& keys = "Clock=free\nScene=stamp\n");
  ~BenchmarkCamera();
  BenchmarkCamera(const BenchmarkCamera&) = delete;
  BenchmarkCamera& operator=(const BenchmarkCamera&) = delete;

  int handle() const { return handle_; }
  std::size_t frameBytes() const;
  /// How many slots the ring of a run until abort has.
  std::size_t ringSlots() const;
  long framesSoFar() const;
  void setUntilAborted() const;
  /// Starts a run until abort and waits for its first frame.
  void startUntilAborted() const;

private:
  int handle_ = -1;
};

/// The same camera without the library: buffers of the same shape as the ring's, queued and waited for directly.
class BareCamera
{
public:
  explicit BareCamera(const BenchmarkCamera& camera);

  void queueAll();
  void start();
  void stop();
  /// Takes @p count frames, giving each buffer back as soon as @p use(buffer, sizeBytes) has seen it.
  template <class Use>
  void loop(long count, Use&& use);
  void loop(long count)
  {
    loop(count, [](const unsigned char*, int) {});
  }

private:
  static constexpr unsigned int kPatienceMs = 5000;

  struct Unmap
  {
    std::size_t sizeBytes;
    void operator()(unsigned char* memory) const;
  };

  int handle_;
  int frameBytes_;
  std::size_t slots_;
  std::size_t slotBytes_;
  std::unique_ptr<unsigned char[], Unmap> memory_;
};

template <class Use>
void BareCamera::loop(long count, Use&& use)
{
  for (long i = 0; i < count; ++i) {
    unsigned char* buffer = nullptr;
    int sizeBytes = 0;
    require(VX_WaitBuffer(handle_, &buffer, &sizeBytes, kPatienceMs) == VX_SUCCESS, "VX_WaitBuffer");
    use(buffer, sizeBytes);
    VX_QueueBuffer(handle_, buffer, sizeBytes);
  }
}
