// SPDX-License-Identifier: MIT
// Reading and writing features of an open device.
#pragma once

#include "vxcore.h"

#include <cstdint>
#include <string>

// The layers above reach the feature library only through this folder. Each of these functions is one call into it and
// returns its code: VX_SUCCESS, or one of the VX_ERR_ codes.

inline int ReadInt(int coreHandle, const wchar_t* feature, long long& value)
{
  return VX_GetInt(coreHandle, feature, &value);
}

inline int ReadIntMax(int coreHandle, const wchar_t* feature, long long& maximum)
{
  return VX_GetIntMax(coreHandle, feature, &maximum);
}

inline int WriteInt(int coreHandle, const wchar_t* feature, long long value)
{
  return VX_SetInt(coreHandle, feature, value);
}

inline int ReadFloat(int coreHandle, const wchar_t* feature, double& value)
{
  return VX_GetFloat(coreHandle, feature, &value);
}

inline int ReadFloatMin(int coreHandle, const wchar_t* feature, double& minimum)
{
  return VX_GetFloatMin(coreHandle, feature, &minimum);
}

inline int ReadFloatMax(int coreHandle, const wchar_t* feature, double& maximum)
{
  return VX_GetFloatMax(coreHandle, feature, &maximum);
}

inline int WriteFloat(int coreHandle, const wchar_t* feature, double value)
{
  return VX_SetFloat(coreHandle, feature, value);
}

/// Off is 0; a device may answer any other number for on.
inline int ReadBool(int coreHandle, const wchar_t* feature, int& on)
{
  return VX_GetBool(coreHandle, feature, &on);
}

/// Any number is passed on; the device checks it.
inline int WriteBool(int coreHandle, const wchar_t* feature, int on)
{
  return VX_SetBool(coreHandle, feature, on);
}

/// The index of the present value of an enumerated feature.
inline int ReadIndex(int coreHandle, const wchar_t* feature, int& index)
{
  return VX_GetEnumerated(coreHandle, feature, &index);
}

inline int WriteIndex(int coreHandle, const wchar_t* feature, int index)
{
  return VX_SetEnumerated(coreHandle, feature, index);
}

/// Sets an enumerated feature by the text of a value.
inline int WriteText(int coreHandle, const wchar_t* feature, const wchar_t* text)
{
  return VX_SetEnumeratedString(coreHandle, feature, text);
}

/// How many values an enumerated feature has.
inline int ReadValueCount(int coreHandle, const wchar_t* feature, int& count)
{
  return VX_GetEnumeratedCount(coreHandle, feature, &count);
}

/// How long the text of a string feature may be.
inline int ReadStringLength(int coreHandle, const wchar_t* feature, int& length)
{
  return VX_GetStringMaxLength(coreHandle, feature, &length);
}

inline int SendCommand(int coreHandle, const wchar_t* feature)
{
  return VX_Command(coreHandle, feature);
}

/// Whether a device has a feature, as it answers: 1 if it does.
inline int ReadImplemented(int coreHandle, const wchar_t* feature, int& flag)
{
  return VX_IsImplemented(coreHandle, feature, &flag);
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
