// SPDX-License-Identifier: MIT
// The camera that a run talks to.
#include "acquisition/TRunCamera.h"

#include "features/current_core_handle.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <unistd.h>

namespace {

constexpr const char* kVariable = "VXMCD_INDEPENDENT_CAMERAS";

// The setting in the lowest bit and, above it, how many starts and runs there are: as one value, so that the setting
// cannot change between the moment at which a start reads it and the one at which it is counted.
constexpr unsigned int kIndependentBit = 1;
constexpr unsigned int kOneRun = 2;
constinit std::atomic<unsigned int> settingAndRuns{0};

bool IsIndependentBitSet(unsigned int value)
{
  return (value & kIndependentBit) != 0;
}

// The current camera of the process is another one, or may become one at any time.
bool IsIndependentNow(unsigned int value)
{
  return IsIndependentBitSet(value) || CameraOfThread() != kNoCameraOfThread;
}

// While the library is loaded, before any run.
bool ReadEnvironment()
{
  const char* const text = secure_getenv(kVariable);
  const std::string_view value = text ? text : "";
  if (value == "1") return TRunCamera::SetIndependent(true);
  if (!value.empty() && value != "0")
    dprintf(STDERR_FILENO, "vxmcd: %s=\"%s\" is neither 0 nor 1; cameras are not independent\n", kVariable, text);
  return false;
}

[[maybe_unused]] const bool isIndependentByEnvironment = ReadEnvironment();

} // namespace

TRunCamera::TRunCamera(int coreHandle)
    : coreHandle_(coreHandle), isIndependent_(IsIndependentNow(settingAndRuns.fetch_add(kOneRun)))
{
}

TRunCamera::~TRunCamera()
{
  settingAndRuns.fetch_sub(kOneRun);
}

int TRunCamera::CoreHandle() const
{
  return isIndependent_ ? coreHandle_ : CurrentCoreHandle();
}

bool TRunCamera::SetIndependent(bool independent)
{
  const unsigned int wanted = independent ? kIndependentBit : 0;
  unsigned int before = 0;
  while (!settingAndRuns.compare_exchange_weak(before, wanted))
    if (before >= kOneRun) return IsIndependentBitSet(before) == independent;
  return true;
}

bool TRunCamera::IsNextIndependent()
{
  return IsIndependentNow(settingAndRuns);
}
