// SPDX-License-Identifier: MIT
// How the spool file classes report wrong use.
#pragma once

/// Logs @p text and throws it as a TSDK3Exception.
[[noreturn]] void LogAndThrow(const char* file, int line, const char* function, const char* text);

/// Logs one text and throws the other as a TSDK3Exception. The two differ by a little here and there; kept for
/// whoever searches for them.
[[noreturn]] void LogAndThrow(const char* file, int line, const char* function, const char* logged,
                              const char* thrown);
