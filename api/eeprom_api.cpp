// SPDX-License-Identifier: MIT
// The contents of the camera's EEPROM, through the object that the configuration library created.
#include "api/entry_points.h"
#include "api/result_maps.h"
#include "api/TServiceUse.h"
#include "utility/outputs.h"
#include "utility/TCallNotes.h"
#include "vxmcd.h"
#include "vxmcd_plugins.h"

namespace EntryPoint {

namespace {

bool HasConfiguration(const TServiceUse& camera)
{
  if (camera.Configuration()) return true;
  TCallNotes::AddDetail("there is no configuration library of the camera");
  return false;
}

bool ReadEeprom(const TServiceUse& camera)
{
  if (camera.Configuration()->ReadFromEEPROM() != 0) return false;
  camera.SetEepromRead();
  return true;
}

/// Makes sure that the configuration has the contents of the EEPROM.
bool loadFromEEPROM(const TServiceUse& camera)
{
  if (!HasConfiguration(camera)) return false;
  return camera.IsEepromRead() || ReadEeprom(camera);
}

} // namespace

unsigned int vxsys_EEPUP(void)
{
  const TServiceUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!HasConfiguration(camera)) return RC_NOT_SUPPORTED;
  return ReadEeprom(camera) ? RC_SUCCESS : RC_FEATURE_ERROR;
}

unsigned int vxsys_EEPVR(int* first, int* version)
{
  const TServiceUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!HasConfiguration(camera)) return RC_NOT_SUPPORTED;
  if (!loadFromEEPROM(camera)) return RC_FEATURE_ERROR;
  const unsigned int number = camera.Configuration()->GetVersion();
  WriteOutput(version, number);
  WriteOutput(first, 0);
  return RC_SUCCESS;
}

unsigned int vxsys_EEPFL(void)
{
  const TServiceUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!loadFromEEPROM(camera)) return RC_FEATURE_ERROR;
  return ToResultCode(camera.Configuration()->WriteToEEPROM(), RC_FEATURE_ERROR);
}

unsigned int vxsys_EEPLD(const char* fileName)
{
  const TServiceUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!loadFromEEPROM(camera)) return RC_FEATURE_ERROR;
  return ToResultCode(camera.Configuration()->LoadFromFile(fileName), RC_FEATURE_ERROR);
}

unsigned int vxsys_EEPSV(const char* fileName)
{
  const TServiceUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!loadFromEEPROM(camera)) return RC_FEATURE_ERROR;
  return ToResultCode(camera.Configuration()->SaveToFile(fileName), RC_FEATURE_ERROR);
}

unsigned int LoadEEPROM(const char* fileName)
{
  const TServiceUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!HasConfiguration(camera)) return RC_NOT_SUPPORTED;
  if (camera.Configuration()->LoadFromFile(fileName) != 0) return RC_FEATURE_ERROR;
  return ToResultCode(camera.Configuration()->WriteToEEPROM(), RC_FEATURE_ERROR);
}

} // namespace EntryPoint
