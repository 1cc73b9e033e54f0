// SPDX-License-Identifier: MIT
// The host's time of day.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// Nanoseconds since 1970-01-01 UTC.
std::int64_t HostTimeNs();

/// Such a time as "2026-01-31T12:34:56.789012345Z".
std::string UtcText(std::int64_t timeNs);

/// The time in such a text; nothing for any other text.
std::optional<std::int64_t> HostTimeOf(const std::string& utc);
