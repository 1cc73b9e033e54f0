// SPDX-License-Identifier: MIT
// Backends in plug-in libraries, which are loaded only when the configuration names their cameras.
#pragma once

#include "vxcore/backend/TBackendTable.h"

#include <memory>
#include <string>

/// What both sides must have been built from: the interfaces that they share are those of one version.
#define VXCORE_BACKEND_VERSION VXCORE_VERSION

// What such a library exports. The caller owns the backend; null, with a message, when the entries have an error.
extern "C" const char vxcoreBackendVersion[];
extern "C" vxcore::IDeviceBackend* vxcoreMakeBackend(const vxcore::TBackendEntries& entries, std::string& error);

namespace vxcore {

/// Makes the backend of a library that lies beside this one, or where the system looks for libraries. The library stays
/// loaded. Null, with a message, when it is not installed, is of another version, or finds an error in the entries.
std::unique_ptr<IDeviceBackend> MakePluginBackend(const char* library, const TBackendEntries& entries,
                                                  std::string& error);

} // namespace vxcore
