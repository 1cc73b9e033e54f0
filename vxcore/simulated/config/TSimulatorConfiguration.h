// SPDX-License-Identifier: MIT
// The configuration of the simulator: which cameras are attached, and which faults are planned.
#pragma once

#include "vxcore/simulated/config/TCameraConfiguration.h"

#include <string>
#include <vector>

namespace vxsim {

/// A whole configuration. A plain value; docs/simulator.md lists the sections and keys it is read from.
struct TSimulatorConfiguration
{
  std::vector<TCameraConfiguration> cameras;
  std::vector<std::string> faultRules;

  /// Two different cameras and no faults: what is attached when nobody says otherwise.
  static TSimulatorConfiguration BuiltIn();

  /// Reads a configuration from a text. On an error returns false and says in @p error what is wrong and where;
  /// the configuration is unchanged then.
  static bool Parse(const std::string& text, TSimulatorConfiguration& configuration, std::string& error);
  /// The same from a file.
  static bool Load(const std::string& path, TSimulatorConfiguration& configuration, std::string& error);
};

} // namespace vxsim
