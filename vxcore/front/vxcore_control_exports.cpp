// SPDX-License-Identifier: MIT
// The control functions of vxcore_simulator.h that concern the library: configuration, counts, fault plan and call
// log.
#include "vxcore_simulator.h"

#include "vxcore/front/TCallLog.h"
#include "vxcore/front/TDeviceTable.h"
#include "vxcore/front/TFaultPlan.h"

#include <algorithm>
#include <cstring>
#include <new>

using namespace vxcore;

namespace {

template <typename Body>
int Guarded(Body&& body) noexcept
{
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return VX_ERR_OUT_OF_MEMORY;
  }
}

} // namespace

extern "C" {

int VXSIM_Reset(void)
{
  return Guarded([] {
    TDeviceTable::Instance().Reset();
    return VX_SUCCESS;
  });
}

int VXSIM_Configure(const char* text)
{
  return Guarded([text] {
    LastErrorText().clear();
    if (!text) return VXSIM_Reset();
    return TDeviceTable::Instance().Configure(text, LastErrorText()) ? VX_SUCCESS : VX_ERR_OUT_OF_RANGE;
  });
}

const char* VXSIM_GetLastError(void)
{
  return LastErrorText().c_str();
}

int VXSIM_GetInitialiseCount(void)
{
  return TDeviceTable::Instance().InitialiseCount();
}

int VXSIM_GetOpenCount(void)
{
  return TDeviceTable::Instance().OpenCount();
}

int VXSIM_AddFault(const char* rule)
{
  return Guarded([rule] {
    LastErrorText().clear();
    if (!rule) return VX_ERR_NULL_ARGUMENT;
    return TFaultPlan::Instance().Add(rule, LastErrorText()) ? VX_SUCCESS : VX_ERR_OUT_OF_RANGE;
  });
}

int VXSIM_ClearFaults(void)
{
  TFaultPlan::Instance().Clear();
  return VX_SUCCESS;
}

uint64_t VXSIM_GetFaultsFired(void)
{
  return TFaultPlan::Instance().Fired();
}

int VXSIM_StartCallLog(int withWaits)
{
  TCallLog::Instance().Start(withWaits != 0);
  return VX_SUCCESS;
}

int VXSIM_StopCallLog(void)
{
  TCallLog::Instance().Stop();
  return VX_SUCCESS;
}

size_t VXSIM_GetCallCount(void)
{
  return TCallLog::Instance().Count();
}

int VXSIM_GetCall(size_t index, char* line, size_t length)
{
  return Guarded([index, line, length] {
    if (!line || length == 0) return VX_ERR_NULL_ARGUMENT;
    std::string text;
    if (!TCallLog::Instance().Get(index, text)) return VX_ERR_OUT_OF_RANGE;
    const size_t copied = std::min(text.size(), length - 1);
    std::memcpy(line, text.data(), copied);
    line[copied] = '\0';
    return VX_SUCCESS;
  });
}

} // extern "C"
