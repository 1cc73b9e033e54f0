// SPDX-License-Identifier: MIT
// What the feature library finds in libvxcore-genicam.so.
#include "vxcore/backend/backend_plugin.h"
#include "vxcore/genicam/TGenICamBackend.h"

extern "C" [[gnu::visibility("default")]] const char vxcoreBackendVersion[] = VXCORE_BACKEND_VERSION;

extern "C" [[gnu::visibility("default")]] vxcore::IDeviceBackend*
vxcoreMakeBackend(const vxcore::TBackendEntries& entries, std::string& error)
{
  return vxgenicam::TGenICamBackend::Make(entries, error).release();
}
