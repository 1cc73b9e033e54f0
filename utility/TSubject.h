// SPDX-License-Identifier: MIT
// Something whose changes can be observed.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

class TObserver;

/// Base of what can be observed: keeps up to 64 observers, borrowed until they are removed, and notifies them
/// of changes. Not synchronised: its callers serialise. An observer may register or remove observers, itself
/// included, and start another notification while it is being notified. What an observer throws ends the
/// notification and reaches the caller.
class TSubject
{
public:
  TSubject();
  ~TSubject();
  TSubject(const TSubject&) = delete;
  TSubject& operator=(const TSubject&) = delete;

  /// Appends @p observer. Without effect for null and when there are 64 already.
  void RegisterObserver(TObserver* observer);
  /// Removes every entry of @p observer; the others keep their order. It is not touched any more afterwards.
  void RemoveObserver(TObserver* observer);
  /// Notifies those that are registered now, first to last, except those removed meanwhile.
  void NotifyObservers();

private:
  static constexpr std::int32_t kCapacity = 64;
  using TNumbers = std::array<std::uint64_t, kCapacity>;

  bool IsRegistered(std::uint64_t number) const;

  const std::int32_t capacity_;
  std::unique_ptr<TObserver*[]> observers_;
  std::int32_t count_ = 0;
  // Of each observer, ascending. A removed observer and a new one may have the same address, never the same number.
  TNumbers numbers_{};
  std::uint64_t nextNumber_ = 0;
};
