// SPDX-License-Identifier: MIT
// What the public header says of the entry points' answers.
#pragma once

#include <string>

/// Whether the public header documents @p code for the entry point @p name; false for an unknown name.
bool IsDocumented(const std::string& name, unsigned int code);
/// Whether it answers RC_NOT_INITIALIZED as long as no camera is open.
bool NeedsCamera(const std::string& name);
