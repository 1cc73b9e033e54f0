// SPDX-License-Identifier: MIT
// Devices on the camera's I2C buses.
#include "api/entry_points.h"
#include "api/result_maps.h"
#include "api/TCameraUse.h"
#include "features/feature_access.h"
#include "features/feature_names.h"
#include "service/TSDK3i2c.h"
#include "vxmcd.h"

namespace EntryPoint {

namespace {

constexpr const wchar_t* kControllerBus = L"Controller";

} // namespace

unsigned int I2CBurstRead(unsigned char address, long count, unsigned char* data)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!isImplemented(camera.CoreHandle(), Feature::kControllerI2CRead)) return RC_NOT_SUPPORTED;
  TSDK3i2c bus(camera.CoreHandle(), kControllerBus);
  return ToResultCode(bus.Read(address, data, static_cast<unsigned int>(count)), ResultMap::kI2c);
}

unsigned int I2CBurstWrite(unsigned char address, long count, unsigned char* data)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!isImplemented(camera.CoreHandle(), Feature::kControllerI2CWrite)) return RC_NOT_SUPPORTED;
  TSDK3i2c bus(camera.CoreHandle(), kControllerBus);
  return ToResultCode(bus.Write(address, data, static_cast<unsigned int>(count)), ResultMap::kI2c);
}

} // namespace EntryPoint
