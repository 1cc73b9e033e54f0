// SPDX-License-Identifier: MIT
// The steps of a search through a profile file, character by character.
#pragma once

#include "ini/TProfileText.h"

#include <cstdio>

// A profile file is a sequence of 8-bit characters; lines count only where it says so:
// - ";" outside names starts a comment, which ends with the line;
// - "[" starts the name of a section and "]" ends it;
// - within a section, the text before "=" is a key's name, on however many lines;
// - a value ends with its line or at a comment. Quotes and spaces in it are dropped, spaces in names too.
// All steps are reentrant, never fail and end at the end of the file at the latest.

constexpr int kProfileFound = 1;
constexpr int kProfileNotFound = -1;
constexpr int kProfileNoMoreKeys = 0;

/// Moves past the next section header and reads its name. False at the end of the file.
bool NextSection(std::FILE* stream, TProfileText& name);

/// Moves past the "]" of the next section of that name: kProfileFound, or kProfileNotFound at the end.
int SearchForSection(std::FILE* stream, const char* section);

/// Moves to the first character of the next key: kProfileFound, or kProfileNoMoreKeys at the end of the file and
/// at the "[" of the next section.
int MoveToNextKey(std::FILE* stream);

/// From the first character of a key, moves behind its "=" and takes its name. False at the end of the file: then
/// it is not a key.
bool ReadKeyName(std::FILE* stream, TProfileText& name);

/// Moves past the "=" of the next key of that name in this section: kProfileFound, or kProfileNotFound.
int SearchForKey(std::FILE* stream, const char* key);

/// From behind a "=", takes the value. False when the file ends before the value does: a last line without a line
/// break has no value.
bool ReadValue(std::FILE* stream, TProfileText& value);

/// Moves past the next line feed.
void SkipLine(std::FILE* stream);
