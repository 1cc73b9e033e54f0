// SPDX-License-Identifier: MIT
// Questions and guarded writes that many entry points share.
#pragma once

#include <cstdint>
#include <string>

/// Whether a device has a feature: only a successful query that answers exactly 1 counts.
bool isImplemented(int coreHandle, const wchar_t* feature);

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
