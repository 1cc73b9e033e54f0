// SPDX-License-Identifier: MIT
// The texts of enumerated values, and the numbers that they begin with.
#pragma once

#include "features/feature_interfaces.h"
#include "vxcore.h"

#include <string>

/// How many values the feature has; 0 when that cannot be read.
inline int CountOf(IEnum& feature)
{
  int count = 0;
  return feature.GetCount(count) == VX_SUCCESS ? count : 0;
}

/// The text of the present value; empty when it cannot be read.
inline std::wstring PresentText(IEnum& feature)
{
  int index = 0;
  std::wstring text;
  if (feature.GetIndex(index) != VX_SUCCESS) return {};
  if (feature.GetStringByIndex(index, text) != VX_SUCCESS) return {};
  return text;
}

/// Calls `visit(text)` for the texts of the values 0 to count - 1, each read by `read(index, text)`, which returns
/// the feature library's code. A text that cannot be read is left out. Many failures in a row end the search, so that
/// an absurd count costs no time.
template <class Read, class Visit>
void VisitTexts(int count, Read read, Visit visit)
{
  constexpr int kMaxFailuresInARow = 100;
  int failures = 0;
  for (int index = 0; index < count && failures < kMaxFailuresInARow; ++index) {
    std::wstring text;
    if (read(index, text) == VX_SUCCESS) {
      failures = 0;
      visit(text);
    } else
      ++failures;
  }
}

/// As above, for the values of @p feature.
template <class Visit>
void VisitTexts(IEnum& feature, Visit visit)
{
  const auto read = [&](int index, std::wstring& text) { return feature.GetStringByIndex(index, text); };
  VisitTexts(CountOf(feature), read, visit);
}

/// The number that @p text begins with ("100 MHz" gives 100), 0 when it begins with none. The decimal point is a
/// point in every locale.
float LeadingFloat(const std::wstring& text);

/// As LeadingFloat(), for a whole decimal number; one that does not fit becomes the nearest that does.
int LeadingInt(const std::wstring& text);
