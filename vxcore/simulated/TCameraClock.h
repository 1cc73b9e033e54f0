// SPDX-License-Identifier: MIT
// The time of a simulated camera.
#pragma once

#include <chrono>
#include <cstdint>

namespace vxsim {

/// Nanoseconds of a camera's clock, which is the wall clock or one that only its frames move, and the ticks of its
/// timestamps. Owned by TAcquisition, guarded by its lock.
class TCameraClock final
{
public:
  static constexpr int64_t kNsPerSecond = 1'000'000'000;
  using TWallClock = std::chrono::steady_clock;

  TCameraClock(bool isReal, int64_t ticksPerSecond)
      : isReal_(isReal), ticksPerSecond_(ticksPerSecond), zeroNs_(NowNs())
  {
  }

  /// The wall clock; otherwise the time moves by MoveTo() and Advance() alone.
  bool IsReal() const { return isReal_; }
  int64_t NowNs() const
  {
    if (!isReal_) return freeNowNs_;
    return std::chrono::duration_cast<std::chrono::nanoseconds>(TWallClock::now().time_since_epoch()).count();
  }
  void MoveTo(int64_t ns) { freeNowNs_ = ns; }
  /// False when the time would be more than a century from its beginning.
  bool Advance(int64_t nanoseconds)
  {
    if (freeNowNs_ > kMaxNs - nanoseconds) return false;
    freeNowNs_ += nanoseconds;
    return true;
  }

  /// The timestamp of a time.
  int64_t Ticks(int64_t ns) const
  {
    const int64_t passed = ns - zeroNs_;
    return passed / kNsPerSecond * ticksPerSecond_ + passed % kNsPerSecond * ticksPerSecond_ / kNsPerSecond;
  }
  void ResetTicks() { zeroNs_ = NowNs(); }

private:
  static constexpr int64_t kMaxNs = int64_t{4} * 1000 * 1000 * 1000 * kNsPerSecond;

  const bool isReal_;
  const int64_t ticksPerSecond_;
  int64_t freeNowNs_ = 0; ///< the time when it is not the wall clock's
  int64_t zeroNs_;        ///< time of timestamp 0
};

} // namespace vxsim
