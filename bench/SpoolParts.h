// SPDX-License-Identifier: MIT
// The classes that write runs, put together in ways that the library does not choose.
#pragma once

#include "FrameWriters.h"
#include "spool/TSpoolFile.h"
#include "spool/TSpoolLayout.h"

#include <string>

/// Writes @p count frames into @p directory in the given layout, with two threads, as a run of that layout does, but
/// without camera and description. @p volume may claim less than the file system can do.
WritingCost writeThroughParts(const std::string& directory, const TSpoolLayout& layout, const TSpoolVolume& volume,
                              const FrameSource& frames, long count);
