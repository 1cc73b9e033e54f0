// SPDX-License-Identifier: MIT
// The text of a value of an enumerated feature.
#pragma once

#include <array>

/// Room for one value's text, for places that must not allocate. A plain value. Failures are the feature library's
/// codes, and leave a text that means nothing.
class TValueText final
{
public:
  /// Reads the text of the value at @p index.
  int Read(int coreHandle, const wchar_t* feature, int index);
  /// Reads the text of the present value.
  int ReadPresent(int coreHandle, const wchar_t* feature);

  bool Is(const wchar_t* text) const;
  const wchar_t* Get() const { return text_.data(); }

private:
  std::array<wchar_t, 64> text_{};
};
