// SPDX-License-Identifier: MIT
// The [GenICam] section of a configuration.
#pragma once

#include "vxcore/backend/TBackendTable.h"
#include "vxcore/genicam/TAcquisition.h"
#include "vxcore/genicam/TFeatureMap.h"

#include <optional>
#include <string>
#include <vector>

namespace vxgenicam {

/// Which cameras there are, and how they are driven. Owned by TGenICamBackend; constant once it is read.
struct TGenICamConfiguration
{
  /// Addresses as they are written: 192.168.1.20, usb:SERIAL, Fake_1. "discover" stands for every camera that answers.
  std::vector<std::string> devices;
  TFeatureMap map;
  std::string line; ///< input of external triggers; "": the camera's first
  TStreamOptions stream;
  int packetBytes = 0;                   ///< of the stream's packets, with headers; 0: the largest that arrives
  std::optional<EIncomplete> incomplete; ///< without: by the trigger mode

  /// False, with a message, when an entry has an error.
  bool Read(const vxcore::TBackendEntries& entries, std::string& error);
};

} // namespace vxgenicam
