// SPDX-License-Identifier: MIT
// Writing the frames of a run to the disk.
#include "acquisition/TVxmcdAcquisitionManager.h"
#include "api/call_log.h"
#include "api/entry_points.h"
#include "api/TCameraUse.h"
#include "spool/TSpoolLayout.h"
#include "spool/TSpoolSpace.h"
#include "utility/outputs.h"

#include <optional>

namespace EntryPoint {

unsigned int SetSpool(int active, int method, char* path)
{
  if (method != TSpoolLayout::kImagePerFile && method != TSpoolLayout::kImagesTogether)
    return Refuse(RC_P2_INVALID, "the methods are %d and %d", TSpoolLayout::kImagePerFile,
                  TSpoolLayout::kImagesTogether);
  if (active == 1 && !path) return RC_P3_INVALID;
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  camera.Manager().SetSpool(active == 1, method, path);
  return RC_SUCCESS;
}

unsigned int SetSpoolThreadCount(int count)
{
  if (count < 1) return Refuse(RC_P1_INVALID, "there must be 1 thread or more");
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  camera.Manager().SetSpoolThreadCount(count);
  return RC_SUCCESS;
}

unsigned int vxmcd_GetSpoolSpace(unsigned long long* neededBytes, unsigned long long* freeBytes)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  const std::optional<TSpoolSpace> space = camera.Manager().SpoolSpace();
  if (!space) return RC_NOT_AVAILABLE;
  WriteOutput(neededBytes, space->neededBytes);
  WriteOutput(freeBytes, space->freeBytes);
  return RC_SUCCESS;
}

} // namespace EntryPoint
