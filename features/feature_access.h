// SPDX-License-Identifier: MIT
// Reading and writing features of an open device.
#pragma once

#include "features/refused_access.h"
#include "vxcore.h"

#include <cstdint>
#include <string>

// The layers above reach the feature library only through this folder. Each of these functions is one call into it and
// returns its code: VX_SUCCESS, or one of the VX_ERR_ codes, which is noted for the log.

inline int ReadInt(int coreHandle, const wchar_t* feature, long long& value)
{
  return Noted(VX_GetInt(coreHandle, feature, &value), NoteRead, feature);
}

inline int ReadIntMax(int coreHandle, const wchar_t* feature, long long& maximum)
{
  return Noted(VX_GetIntMax(coreHandle, feature, &maximum), NoteRead, feature);
}

inline int WriteInt(int coreHandle, const wchar_t* feature, long long value)
{
  return Noted(VX_SetInt(coreHandle, feature, value), NoteInt, coreHandle, feature, value);
}

inline int ReadFloat(int coreHandle, const wchar_t* feature, double& value)
{
  return Noted(VX_GetFloat(coreHandle, feature, &value), NoteRead, feature);
}

inline int ReadFloatMin(int coreHandle, const wchar_t* feature, double& minimum)
{
  return Noted(VX_GetFloatMin(coreHandle, feature, &minimum), NoteRead, feature);
}

inline int ReadFloatMax(int coreHandle, const wchar_t* feature, double& maximum)
{
  return Noted(VX_GetFloatMax(coreHandle, feature, &maximum), NoteRead, feature);
}

inline int WriteFloat(int coreHandle, const wchar_t* feature, double value)
{
  return Noted(VX_SetFloat(coreHandle, feature, value), NoteFloat, coreHandle, feature, value);
}

/// Off is 0; a device may answer any other number for on.
inline int ReadBool(int coreHandle, const wchar_t* feature, int& on)
{
  return Noted(VX_GetBool(coreHandle, feature, &on), NoteRead, feature);
}

/// Any number is passed on; the device checks it.
inline int WriteBool(int coreHandle, const wchar_t* feature, int on)
{
  return Noted(VX_SetBool(coreHandle, feature, on), NoteBool, feature, on);
}

/// The index of the present value of an enumerated feature.
inline int ReadIndex(int coreHandle, const wchar_t* feature, int& index)
{
  return Noted(VX_GetEnumerated(coreHandle, feature, &index), NoteRead, feature);
}

inline int WriteIndex(int coreHandle, const wchar_t* feature, int index)
{
  return Noted(VX_SetEnumerated(coreHandle, feature, index), NoteIndex, coreHandle, feature, index);
}

/// Sets an enumerated feature by the text of a value.
inline int WriteText(int coreHandle, const wchar_t* feature, const wchar_t* text)
{
  return Noted(VX_SetEnumeratedString(coreHandle, feature, text), NoteText, coreHandle, feature, text);
}

/// How many values an enumerated feature has.
inline int ReadValueCount(int coreHandle, const wchar_t* feature, int& count)
{
  return Noted(VX_GetEnumeratedCount(coreHandle, feature, &count), NoteRead, feature);
}

/// How long the text of a string feature may be.
inline int ReadStringLength(int coreHandle, const wchar_t* feature, int& length)
{
  return Noted(VX_GetStringMaxLength(coreHandle, feature, &length), NoteRead, feature);
}

inline int SendCommand(int coreHandle, const wchar_t* feature)
{
  return Noted(VX_Command(coreHandle, feature), NoteCommand, feature);
}

/// Whether a device has a feature, as it answers: 1 if it does.
inline int ReadImplemented(int coreHandle, const wchar_t* feature, int& flag)
{
  return Noted(VX_IsImplemented(coreHandle, feature, &flag), NoteRead, feature);
}

/// Whether a device has a feature: only a successful query that answers exactly 1 counts.
bool isImplemented(int coreHandle, const wchar_t* feature);

/// Whether a feature can be written now: only a successful query that answers exactly 1 counts.
bool IsWritable(int coreHandle, const wchar_t* feature);

/// The index of a value text in an enumerated feature of the current camera, or -1. The search ends at the first
/// text that cannot be read. A value is found whether or not it is available now.
int GetEnumeratedIndexFromString(const wchar_t* feature, const wchar_t* value);

/// Sets an enumerated feature of the current camera by text, if that text exists and is available now.
/// @return RC_SUCCESS, whatever the write itself answers (kept for callers that rely on it); else @p failCode
unsigned int CheckSetEnumeratedIndex(const wchar_t* feature, const wchar_t* value, unsigned int failCode);

/// Reads a string feature into a buffer of @p length wide characters, at least 1 and at most 4096, whatever the
/// device says of its length. The text ends where the buffer does, if not before.
/// @return the feature library's code; @p text is empty when it is not 0
int ReadString(int coreHandle, const wchar_t* feature, std::int64_t length, std::wstring& text);
