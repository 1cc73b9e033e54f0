// SPDX-License-Identifier: MIT
// One rule of a fault plan, and how its line is read.
#pragma once

#include <cstdint>
#include <string>

namespace vxsim {

/// What a rule watches.
enum class EFaultSubject
{
  Call,   ///< calls of one exported function
  Value,  ///< what reads of one feature give
  Frame,  ///< frames on their way into a buffer
  Chunk,  ///< the metadata at the end of frames
  Camera, ///< the camera itself, at a frame
  Seed,   ///< no rule: rules after it act at random
};

/// What a rule does.
enum class EFaultAction
{
  Code,         ///< call: answer a code instead of doing anything
  Delay,        ///< call: do it late
  Output,       ///< call: answer success with this number as the output
  Unterminated, ///< call: fill the caller's text buffer without a terminator
  SetValue,
  Drop,
  Short,
  Oversize,
  Swap,
  Null,
  Foreign,
  Repeat,
  Late,
  ChunkLength,
  ChunkCid,
  ChunkTruncated,
  ChunkRandom,
  Unplug,
  Replug,
  Stall,
};

/// A rule: subject, when, and what. A plain value; TFaultPlan counts and fires it.
struct TFaultRule
{
  EFaultSubject subject = EFaultSubject::Call;
  EFaultAction action = EFaultAction::Code;
  std::string function;   ///< call: the exported function
  std::wstring feature;   ///< call: only of this feature, empty for any; value: the feature
  int device = -1;        ///< only this device; -1: any
  uint64_t first = 1;     ///< acts from this match on
  uint64_t interval = 0;  ///< 0: once, at `first`; n: at every n-th from `first` on
  long long number = 0;   ///< the action's code, size, length or seed
  int64_t durationNs = 0; ///< the action's time
  std::string text;       ///< value: what is read

  /// Reads a line of the plan language. False, with a message, when it is not understood.
  static bool Parse(const std::string& line, TFaultRule& rule, std::string& error);
};

} // namespace vxsim
