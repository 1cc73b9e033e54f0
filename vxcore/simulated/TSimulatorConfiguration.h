// SPDX-License-Identifier: MIT
// The configuration of the simulator: which cameras are attached.
#pragma once

#include "vxcore/backend/configuration_text.h"
#include "vxcore/simulated/TCameraConfiguration.h"

#include <string>
#include <vector>

namespace vxsim {

/// A plain value; docs/simulator.md lists the sections and keys it is read from.
struct TSimulatorConfiguration
{
  std::vector<TCameraConfiguration> cameras;

  /// Two different cameras: what is attached without a configuration.
  static TSimulatorConfiguration BuiltIn();

  /// Reads a configuration. On an error returns false and says in @p error what is wrong and where; the
  /// configuration is unchanged then.
  static bool Read(const std::vector<vxcore::TConfigurationEntry>& entries, TSimulatorConfiguration& configuration,
                   std::string& error);
};

} // namespace vxsim
