// SPDX-License-Identifier: MIT
// The text of a value of an enumerated feature.
#include "features/TValueText.h"

#include "features/refused_access.h"

#include <cwchar>

int TValueText::Read(int coreHandle, const wchar_t* feature, int index)
{
  text_ = {};
  const int code =
      Noted(VX_GetEnumeratedString(coreHandle, feature, index, text_.data(), static_cast<int>(text_.size())),
            NoteRead, feature);
  text_.back() = L'\0';
  return code;
}

int TValueText::ReadPresent(int coreHandle, const wchar_t* feature)
{
  int index = 0;
  const int code = Noted(VX_GetEnumerated(coreHandle, feature, &index), NoteRead, feature);
  return code == VX_SUCCESS ? Read(coreHandle, feature, index) : code;
}

bool TValueText::Is(const wchar_t* text) const
{
  return std::wcscmp(text_.data(), text) == 0;
}
