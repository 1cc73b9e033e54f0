// SPDX-License-Identifier: MIT
// Floating-point numbers in the texts of files.
#pragma once

/// The number that @p text begins with, as strtod reads it; 0 when it begins with none. The decimal point is a
/// point in every locale. @p end, if given, becomes the first character behind the number.
double LeadingDouble(const char* text, const char** end = nullptr);
