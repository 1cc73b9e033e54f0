// SPDX-License-Identifier: MIT
// The faults that are planned: which rule acts at which call or frame.
#pragma once

#include "vxcore/front/TFaultRule.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <random>
#include <string_view>
#include <vector>

namespace vxcore {

/// The rules in force. One for the whole library, see Instance(). Thread-safe. With no rule a check costs one
/// relaxed atomic load (IsEmpty()).
class TFaultPlan final
{
public:
  static TFaultPlan& Instance();

  static bool IsEmpty() { return !active_.load(std::memory_order_relaxed); }

  bool Add(const std::string& line, std::string& error);
  void Clear();
  uint64_t Fired() const { return fired_.load(std::memory_order_relaxed); }

  /// The rule that acts on this call, if one does. Counts the call for every rule that watches it.
  std::optional<TFaultRule> OnCall(std::string_view function, std::wstring_view feature, int device);
  /// The rule that replaces the value of this read of a feature.
  std::optional<TFaultRule> OnRead(std::wstring_view feature, int device);
  /// What the rules of one subject (frame, chunk or camera) do to a device's next frame.
  std::vector<TPlannedFault> OnFrame(EFaultSubject subject, int device);

private:
  struct TEntry
  {
    TFaultRule rule;
    uint64_t matches = 0;
    bool armed = true;
    bool random = false; ///< acts on a quarter of what it could act on
  };

  TFaultPlan() = default;
  bool Matches(TEntry& entry);
  friend class TDeviceFaults;

  inline static std::atomic<bool> active_{false};
  std::atomic<uint64_t> fired_{0};

  std::mutex mutex_; // guards what follows
  std::vector<TEntry> entries_;
  bool random_ = false;
  std::mt19937_64 generator_;
};

/// The plan as one device sees it.
class TDeviceFaults final : public IFrameFaults
{
public:
  explicit TDeviceFaults(int device) : IFrameFaults(TFaultPlan::active_), device_(device) {}

  std::vector<TPlannedFault> OnCamera() override { return On(EFaultSubject::Camera); }
  std::vector<TPlannedFault> OnFrame() override { return On(EFaultSubject::Frame); }
  std::vector<TPlannedFault> OnMetadata() override { return On(EFaultSubject::Chunk); }

private:
  std::vector<TPlannedFault> On(EFaultSubject subject) const
  {
    return TFaultPlan::Instance().OnFrame(subject, device_);
  }

  const int device_;
};

} // namespace vxcore
