// SPDX-License-Identifier: MIT
// Numbers of the interface that stand for texts of a feature.
#pragma once

#include "utility/TCallNotes.h"

#include <span>

/// A number that programs pass, and the text of the feature that it stands for.
struct TNumberedText
{
  int number;
  const wchar_t* text;
};

/// The text of a number. Without one, null; then the numbers that there are go to the log: "the read modes are 2 and 4".
inline const wchar_t* TextOf(int number, std::span<const TNumberedText> rows, const char* what) noexcept
{
  for (const TNumberedText& row : rows)
    if (row.number == number) return row.text;
  TBoundedText<128> numbers;
  for (const TNumberedText& row : rows) {
    const char* const between = &row == &rows.front() ? "" : &row == &rows.back() ? " and " : ", ";
    numbers.Append("%s%d", between, row.number);
  }
  TCallNotes::AddDetail("the %s are %s", what, numbers.Data());
  return nullptr;
}
