// SPDX-License-Identifier: MIT
// Why a call of the library ended as it did.
#include "utility/TCallNotes.h"

#include <cstring>

constinit thread_local TCallNotes* TCallNotes::current_ = nullptr;

void TCallNotes::AddDetail(const char* format, ...) noexcept
{
  std::va_list arguments;
  va_start(arguments, format);
  AddDetail(format, arguments);
  va_end(arguments);
}

void TCallNotes::AddDetail(const char* format, std::va_list arguments) noexcept
{
  if (current_) current_->Add(format, arguments);
}

void TCallNotes::AddFailure(const char* format, ...) noexcept
{
  if (!current_) return;
  current_->hasFailure_ = true;
  std::va_list arguments;
  va_start(arguments, format);
  current_->Add(format, arguments);
  va_end(arguments);
}

void TCallNotes::Add(const char* format, std::va_list arguments) noexcept
{
  TBoundedText<512> note;
  note.Append(format, arguments);
  if (std::strstr(text_.Data(), note.Data())) return; // a loop does the same again
  text_.Append("%s%s", text_.IsEmpty() ? "" : "; ", note.Data());
}
