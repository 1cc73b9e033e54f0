// SPDX-License-Identifier: MIT
// "TriggerMode": what starts an exposure.
#pragma once

#include "vxcore/genicam/TNodes.h"

#include <string>
#include <vector>

namespace vxgenicam {

/// Sets selectors, sources and edges of a camera's triggers for each of the library's trigger modes. A mode that needs a
/// feature or an entry that the camera does not have is not available. Operations answer `VX_` codes. Owned by
/// TGenICamCamera, borrows the nodes; used under the device's lock.
class TTriggerMode final
{
public:
  enum EMode : int ///< indices of "TriggerMode"
  {
    Internal,
    Software,
    External,
    ExternalStart,
    ExternalExposure,
  };

  /// @param line  the input of external triggers: "Line1"; "": the first that the camera has
  TTriggerMode(TNodes& nodes, std::string line);

  static std::vector<std::wstring> Texts();
  bool IsAvailable(int mode) const;
  int Set(int mode);
  int Mode() const { return mode_; }
  /// Whether each frame waits for a pulse.
  bool IsPulseForEach() const { return mode_ != Internal && mode_ != ExternalStart; }

private:
  std::string RunStartSelector() const;
  std::string Line() const;
  int SwitchOffAll();

  TNodes& nodes_;
  const std::string line_;
  int mode_ = Internal;
};

} // namespace vxgenicam
