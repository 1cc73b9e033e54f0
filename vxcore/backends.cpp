// SPDX-License-Identifier: MIT
// The table of backends: the only file that names them. Devices are numbered in the order of its rows.
#include "vxcore/backend/TBackendTable.h"
#include "vxcore/simulated/TSimulatedBackend.h"

namespace vxcore {

namespace {

constexpr TBackendRow kBackends[] = {
    {"Simulator", vxsim::TSimulatedBackend::OwnsSection, vxsim::TSimulatedBackend::Make},
};

} // namespace

std::span<const TBackendRow> KnownBackends()
{
  return kBackends;
}

} // namespace vxcore
