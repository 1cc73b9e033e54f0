// SPDX-License-Identifier: MIT
// Devices on the camera's I2C buses.
#include "features/current_core_handle.h"
#include "features/feature_access.h"
#include "features/feature_names.h"
#include "service/TSDK3i2c.h"
#include "utility/exports.h"
#include "vxmcd.h"

namespace {

constexpr const wchar_t* kControllerBus = L"Controller";

unsigned int ToResultCode(int status)
{
  switch (status) {
  case TI2c::kDone:
    return RC_SUCCESS;
  case TI2c::kAddressRefused:
    return RC_P1_INVALID;
  case TI2c::kCountRefused:
    return RC_P2_INVALID;
  default:
    return RC_I2C_ERROR;
  }
}

} // namespace

unsigned int I2CBurstRead(unsigned char address, long count, unsigned char* data)
{
  const int coreHandle = CurrentCoreHandle();
  if (coreHandle == kNoCoreHandle) return RC_NOT_INITIALIZED;
  if (!isImplemented(coreHandle, Feature::kControllerI2CRead)) return RC_NOT_SUPPORTED;
  TSDK3i2c bus(coreHandle, kControllerBus);
  return ToResultCode(bus.Read(address, data, static_cast<unsigned int>(count)));
}
VXMCD_PLAIN_NAME(I2CBurstRead, _Z12I2CBurstReadhlPh);

unsigned int I2CBurstWrite(unsigned char address, long count, unsigned char* data)
{
  const int coreHandle = CurrentCoreHandle();
  if (coreHandle == kNoCoreHandle) return RC_NOT_INITIALIZED;
  if (!isImplemented(coreHandle, Feature::kControllerI2CWrite)) return RC_NOT_SUPPORTED;
  TSDK3i2c bus(coreHandle, kControllerBus);
  return ToResultCode(bus.Write(address, data, static_cast<unsigned int>(count)));
}
VXMCD_PLAIN_NAME(I2CBurstWrite, _Z13I2CBurstWritehlPh);
