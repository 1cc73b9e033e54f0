// SPDX-License-Identifier: MIT
// One potentiometer of a potentiometer file.
#pragma once

#include "service/TCameraPot.h"

#include <cstdint>

/// Keys that one potentiometer has in a file, each of which is a search through the file.
inline constexpr std::int64_t kKeysPerCameraPot = 12;

/// Reads the description of the potentiometer with the number @p pot in its group, from 0. Missing keys
/// have defaults. Throws only when memory runs out.
TCameraPot ReadCameraPot(const char* fileName, const char* group, int pot);

/// Writes the description, with the current value as the default.
void WriteCameraPot(const char* fileName, const char* group, int pot, const TCameraPot& description);

/// Writes the number of potentiometers of a group, and reads it: 0 when it is missing.
void WriteCameraPotCount(const char* fileName, const char* group, int count);
int ReadCameraPotCount(const char* fileName, const char* group);
