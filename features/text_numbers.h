// SPDX-License-Identifier: MIT
// Numbers at the start of texts, as a wide string stream reads them.
#pragma once

#include <string>

/// The number that @p text begins with ("100 MHz" gives 100), 0 when it begins with none. The decimal point is a
/// point, whatever language the program speaks.
float LeadingFloat(const std::wstring& text);

/// As LeadingFloat(), for a whole decimal number; one that does not fit becomes the nearest that does.
int LeadingInt(const std::wstring& text);
