// SPDX-License-Identifier: MIT
// How much memory the rings of all cameras have.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

/// The memory of one camera's ring, counted together with that of all other cameras of the process, so that cameras that
/// acquire at the same time do not take more than the machine has: memory that is mapped and not yet written still counts
/// as available. Owned by the ring, and by what it has reserved. Thread-safe.
class TRingMemory final : public std::enable_shared_from_this<TRingMemory>
{
public:
  /// Memory that counts as the ring's while this exists.
  class TReservation final
  {
  public:
    explicit TReservation(std::shared_ptr<TRingMemory> ring) : ring_(std::move(ring)) {}
    ~TReservation() { ring_->Release(bytes_); }
    TReservation(const TReservation&) = delete;
    TReservation& operator=(const TReservation&) = delete;

  private:
    friend class TRingMemory;
    std::shared_ptr<TRingMemory> ring_;
    std::uint64_t bytes_ = 0;
  };

  /// What the rings of all cameras may have together: three quarters of the machine's memory or of the limit of the
  /// control group, whichever is less.
  static std::uint64_t BudgetBytes();

  /// Counts @p bytes as this ring's. Throws std::bad_alloc when @p sharesBudget is set, other cameras have rings, and all
  /// of them together would exceed the budget.
  std::shared_ptr<const TReservation> Reserve(std::uint64_t bytes, bool sharesBudget);

  /// What the rings of other cameras have.
  std::uint64_t BytesOfOthers() const;

private:
  void Release(std::uint64_t bytes);

  std::uint64_t bytes_ = 0; // guarded by the lock of the sum
};
