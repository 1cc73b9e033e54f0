// SPDX-License-Identifier: MIT
// A name or a value that was read from a profile file.
#pragma once

#include <array>
#include <cstddef>

/// A name or a value of a profile file: the first 255 characters that are appended; the others are dropped. A zero
/// byte among them ends the text. A plain value.
class TProfileText final
{
public:
  void Append(int character)
  {
    if (length_ == kCapacity) return;
    text_[length_++] = static_cast<char>(character);
    text_[length_] = '\0';
  }

  void Clear()
  {
    length_ = 0;
    text_[0] = '\0';
  }

  const char* Text() const { return text_.data(); }

private:
  static constexpr std::size_t kCapacity = 255;

  std::array<char, kCapacity + 1> text_{};
  std::size_t length_ = 0;
};
