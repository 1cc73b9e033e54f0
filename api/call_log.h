// SPDX-License-Identifier: MIT
// Lines of the log about calls of the library.
#pragma once

#include "api/TCallArgument.h"
#include "utility/TCallNotes.h"

#include <span>

/// Logs a call that did not succeed, or that succeeded although something was refused.
void LogCall(const char* function, std::span<const TCallArgument> arguments, unsigned int code,
             const TCallNotes& notes) noexcept;

/// Notes for the log why a call is refused, and returns its result code.
[[gnu::format(printf, 2, 3)]] unsigned int Refuse(unsigned int code, const char* format, ...) noexcept;
