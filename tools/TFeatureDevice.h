// SPDX-License-Identifier: MIT
// A camera that is open in the feature library alone.
#pragma once

#include "vxcore.h"

#include <string>

namespace vxtool {

/// A device of the feature library: opened by Open(), closed by the destructor. The library above it is not used, which
/// would write settings of its own. One thread at a time.
class TFeatureDevice final
{
public:
  TFeatureDevice() = default;
  ~TFeatureDevice();
  TFeatureDevice(const TFeatureDevice&) = delete;
  TFeatureDevice& operator=(const TFeatureDevice&) = delete;

  /// Opens the device with this index. Answers a `VX_` code.
  int Open(int index);
  int Handle() const { return handle_; }

private:
  bool isInitialised_ = false;
  int handle_ = VX_HANDLE_NONE;
};

/// One line: the function of the feature library that answered, the code, and what it means.
std::string FeatureCodeText(const std::string& function, int code);

} // namespace vxtool
