// SPDX-License-Identifier: MIT
// A text in a buffer of fixed size.
#pragma once

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdio>

/// A text that is made piece by piece, in a buffer of @p kRoom bytes; what does not fit is cut. Allocates nothing and
/// never throws. A plain value, reentrant.
template <std::size_t kRoom>
class TBoundedText final
{
public:
  void Append(const char* format, std::va_list arguments) noexcept
  {
    const int length = std::vsnprintf(text_ + length_, kRoom - length_, format, arguments);
    if (length < 0) { // a wide character that the locale does not have, behind what was written before it
      text_[length_] = '\0';
      return;
    }
    const std::size_t room = kRoom - 1 - length_;
    cut_ = cut_ || static_cast<std::size_t>(length) > room;
    length_ += std::min(static_cast<std::size_t>(length), room);
  }

  [[gnu::format(printf, 2, 3)]] void Append(const char* format, ...) noexcept
  {
    std::va_list arguments;
    va_start(arguments, format);
    Append(format, arguments);
    va_end(arguments);
  }

  /// Terminated; may be changed in place.
  char* Data() noexcept { return text_; }
  const char* Data() const noexcept { return text_; }
  std::size_t Length() const noexcept { return length_; }
  bool IsEmpty() const noexcept { return length_ == 0; }
  bool IsCut() const noexcept { return cut_; }

private:
  char text_[kRoom] = {};
  std::size_t length_ = 0;
  bool cut_ = false;
};
