// SPDX-License-Identifier: MIT
// One rule of a fault plan, and how its line is read.
#pragma once

#include "vxcore/backend/IFrameFaults.h"

#include <cstdint>
#include <string>

namespace vxcore {

/// What a rule watches.
enum class EFaultSubject
{
  Call,   ///< calls of one exported function
  Value,  ///< values that one feature reads as
  Frame,  ///< frames on their way into a buffer
  Chunk,  ///< the metadata at the end of frames
  Camera, ///< the camera itself, at a frame
  Seed,   ///< no rule: rules after it act at random
};

/// What a rule of a call does.
enum class ECallFault
{
  Code,         ///< answers a code instead of doing anything
  Delay,        ///< does it late
  Output,       ///< answers success with a number as the output
  Unterminated, ///< fills the caller's text buffer without a terminator
};

/// A rule: subject, when, and what. A plain value; TFaultPlan counts and fires it.
struct TFaultRule
{
  EFaultSubject subject = EFaultSubject::Call;
  ECallFault callFault = ECallFault::Code;
  TPlannedFault fault;   ///< frame, chunk, camera: the kind; also of calls: the number and the time
  std::string function;  ///< call: the exported function
  std::wstring feature;  ///< call: only of this feature, empty for any; value: the feature
  int device = -1;       ///< only this device; -1: any
  uint64_t first = 1;    ///< acts from this match on
  uint64_t interval = 0; ///< 0: once, at `first`; n: at every n-th from `first` on
  std::string text;      ///< value: what is read

  /// Reads a line of the plan language. False, with a message, when it is not understood.
  static bool Parse(const std::string& line, TFaultRule& rule, std::string& error);
};

} // namespace vxcore
