// SPDX-License-Identifier: MIT
// The table of backends: the only file that names them. Devices are numbered in the order of its rows.
#include "vxcore/backend/backend_plugin.h"
#include "vxcore/backend/TBackendTable.h"
#include "vxcore/simulated/TSimulatedBackend.h"

namespace vxcore {

namespace {

constexpr std::string_view kGenICam = "GenICam";

bool IsGenICam(std::string_view section)
{
  return section == kGenICam;
}

/// Programs need neither the plug-in nor Aravis, unless their configuration names such cameras.
std::unique_ptr<IDeviceBackend> MakeGenICam(const TBackendEntries* entries, std::string& error)
{
  if (!entries || entries->empty()) return nullptr;
  return MakePluginBackend("libvxcore-genicam.so", *entries, error);
}

constexpr TBackendRow kBackends[] = {
    {"Simulator", vxsim::TSimulatedBackend::OwnsSection, vxsim::TSimulatedBackend::Make},
    {kGenICam.data(), IsGenICam, MakeGenICam, {"VXCORE_GENICAM", "Devices"}},
};

} // namespace

std::span<const TBackendRow> KnownBackends()
{
  return kBackends;
}

} // namespace vxcore
