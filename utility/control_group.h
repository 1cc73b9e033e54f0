// SPDX-License-Identifier: MIT
// What the system lets this process's group of processes use.
#pragma once

#include <cstdint>
#include <string>

/// The memory in bytes that the control group of this process and the groups around it may use, swap not counted; the
/// largest number where there is no limit. Read from the system at every call, from its files below @p root. Thread-safe.
std::uint64_t ControlGroupMemoryLimit(const std::string& root = "");
