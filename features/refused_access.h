// SPDX-License-Identifier: MIT
// What the feature library refuses, in words, for the log.
#pragma once

#include "utility/TCallNotes.h"
#include "vxcore.h"

#include <type_traits>

/// Returns @p code, the feature library's answer. Anything but success goes to @p note, one of the functions below, while
/// a call is under way whose end may be logged.
template <class... Arguments>
int Noted(int code, void (*note)(int, Arguments...) noexcept,
          std::type_identity_t<Arguments>... arguments) noexcept
{
  if (code != VX_SUCCESS && TCallNotes::AreKept()) [[unlikely]]
    note(code, arguments...);
  return code;
}

// Each notes the feature, the value, the feature library's code, and what the camera takes instead.
void NoteRead(int code, const wchar_t* feature) noexcept;
void NoteCommand(int code, const wchar_t* feature) noexcept;
void NoteInt(int code, int coreHandle, const wchar_t* feature, long long value) noexcept;
void NoteFloat(int code, int coreHandle, const wchar_t* feature, double value) noexcept;
void NoteBool(int code, const wchar_t* feature, int on) noexcept;
void NoteIndex(int code, int coreHandle, const wchar_t* feature, int index) noexcept;
void NoteText(int code, int coreHandle, const wchar_t* feature, const wchar_t* text) noexcept;

/// Notes that the camera does not have a feature.
void NoteMissing(const wchar_t* feature) noexcept;
/// Notes that a text is none of those that an enumerated feature takes now.
void NoteNotOffered(int coreHandle, const wchar_t* feature, const wchar_t* text) noexcept;

/// Whether @p index is one of @p count. When it is not, notes that there is no such @p what ("gain").
bool IsIndexOf(int count, int index, const char* what) noexcept;
