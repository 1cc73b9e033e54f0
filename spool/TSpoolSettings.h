// SPDX-License-Identifier: MIT
// What a caller sets about the writing of runs.
#pragma once

#include "features/current_core_handle.h"
#include "spool/TSpoolLayout.h"

#include <cstdint>
#include <string>

/// What a caller sets about the writing of runs, and what the spool dispatch queue adds for one of them. A plain
/// value.
struct TSpoolSettings
{
  std::string path; ///< a directory, made with its parents
  int method = TSpoolLayout::kImagesTogether;
  int threadCount = 2;
  std::uint64_t slots = 0;        ///< of the ring that the images come from, 0 when nobody knows
  int coreHandle = kNoCoreHandle; ///< of the camera that the slots go back to
};
