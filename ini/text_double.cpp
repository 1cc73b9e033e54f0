// SPDX-License-Identifier: MIT
// Floating-point numbers in the texts of files.
#include "ini/text_double.h"

#include <cstdlib>
#include <locale.h>

double LeadingDouble(const char* text, const char** end)
{
  static const locale_t classic = ::newlocale(LC_ALL_MASK, "C", nullptr);
  char* behind = nullptr;
  const double number = ::strtod_l(text, &behind, classic);
  if (end) *end = behind;
  return number;
}
