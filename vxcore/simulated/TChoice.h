// SPDX-License-Identifier: MIT
// The texts of an enumerated setting and the one that is chosen.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vxsim {

/// An enumerated setting: what it can be and what it is. The camera asks for texts, never for indices, so that a
/// configuration may add, drop and reorder them.
struct TChoice
{
  std::vector<std::wstring> texts;
  int index = 0;

  std::wstring_view Text() const
  {
    return Has(index) ? std::wstring_view(texts[static_cast<size_t>(index)]) : std::wstring_view();
  }
  bool Is(std::wstring_view text) const { return Text() == text; }
  bool Has(int wanted) const { return wanted >= 0 && static_cast<size_t>(wanted) < texts.size(); }
  /// The index of a text, or -1.
  int Find(std::wstring_view text) const
  {
    for (size_t i = 0; i < texts.size(); ++i) {
      if (texts[i] == text) return static_cast<int>(i);
    }
    return -1;
  }
  /// Chooses a text when there is one like it.
  void Choose(std::wstring_view text)
  {
    if (const int found = Find(text); found >= 0) index = found;
  }
};

} // namespace vxsim
