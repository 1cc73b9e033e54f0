// SPDX-License-Identifier: MIT
// The text of a value of an enumerated feature.
#pragma once

#include <array>

/// A buffer for one value's text, for code that must not allocate. A plain value. Failures are the feature library's
/// codes; the text is then undefined.
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
