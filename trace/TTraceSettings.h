// SPDX-License-Identifier: MIT
// What VXMCD_TRACE asks for.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// A setting "FILE[,option...]". A plain value.
struct TTraceSettings
{
  std::string file;          ///< as given: %p and %t are not replaced
  bool hasApi = true;        ///< calls of the program
  bool hasCore = true;       ///< calls into the feature library
  bool hasAllFrames = false; ///< every call for a frame, not only the first ones of a run
  bool hashesPixels = true;
  bool storesPixels = false; ///< the pixels themselves, too
  bool hasRegisters = false; ///< what the first registers have in calls of functions whose arguments are not known
  std::uint64_t limitBytes = std::uint64_t{256} << 20;

  /// Replaces what is there. What is wrong; "" when it was understood.
  std::string Parse(std::string_view text);
  /// The name of the file: %p is the process, %t the time (UTC), %% a percent sign.
  std::string FileName() const;
  bool IsForEachProcess() const;
};
