// SPDX-License-Identifier: MIT
// Why a call of the library ended as it did.
#pragma once

#include "utility/TBoundedText.h"

/// What happened during one call of the library, in words, for the line that the log writes about the call. Lives on the
/// stack of a call whose end may be logged; meanwhile, notes of its thread go into it. Without such a call they are dropped,
/// which costs one look at a variable of the thread. Thread-safe; never throws.
class TCallNotes final
{
public:
  TCallNotes() noexcept : outer_(current_) { current_ = this; }
  ~TCallNotes() { current_ = outer_; }
  TCallNotes(const TCallNotes&) = delete;
  TCallNotes& operator=(const TCallNotes&) = delete;

  /// Whether notes of this thread are kept; for callers whose notes are expensive to make.
  static bool AreKept() noexcept { return current_ != nullptr; }

  /// Notes what explains a failure and is no failure by itself, such as a feature that the camera does not have.
  [[gnu::format(printf, 1, 2)]] static void AddDetail(const char* format, ...) noexcept;
  static void AddDetail(const char* format, std::va_list arguments) noexcept;
  /// Notes a failure. It is logged even if the call succeeds, which some do whatever the camera answers.
  [[gnu::format(printf, 1, 2)]] static void AddFailure(const char* format, ...) noexcept;

  bool HasFailure() const noexcept { return hasFailure_; }
  /// The notes in their order, each once, with "; " between; empty without any.
  const char* Text() const noexcept { return text_.Data(); }

private:
  void Add(const char* format, std::va_list arguments) noexcept;

  static thread_local TCallNotes* current_;

  TCallNotes* outer_; // of a call during which a callback made this one
  TBoundedText<1024> text_;
  bool hasFailure_ = false;
};
