// SPDX-License-Identifier: MIT
// Memory that cannot be had at a chosen moment.
#pragma once

#include <atomic>

/// No allocation is refused.
inline constexpr long kNever = -1;

/// Allocations that succeed before one is refused, on all threads; kNever again after that one. A program that links
/// this has these operators new and delete.
extern std::atomic<long> allocationsLeft;
