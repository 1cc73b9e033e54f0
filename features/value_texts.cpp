// SPDX-License-Identifier: MIT
// Numbers at the start of texts.
#include "features/value_texts.h"

#include <locale>
#include <sstream>

namespace {

template <class T>
T Leading(const std::wstring& text)
{
  std::wistringstream stream(text);
  stream.imbue(std::locale::classic());
  T number{};
  stream >> number;
  return number;
}

} // namespace

float LeadingFloat(const std::wstring& text)
{
  return Leading<float>(text);
}

int LeadingInt(const std::wstring& text)
{
  return Leading<int>(text);
}
