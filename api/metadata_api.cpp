// SPDX-License-Identifier: MIT
// Metadata of frames.
#include "acquisition/TTimestampRepository.h"
#include "acquisition/TVxmcdAcquisitionManager.h"
#include "api/entry_points.h"
#include "api/result_maps.h"
#include "api/TCameraUse.h"
#include "features/feature_access.h"
#include "features/feature_names.h"
#include "utility/outputs.h"

namespace EntryPoint {

unsigned int SetMetaData(int enable)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return ToResultCode(WriteBool(camera.CoreHandle(), Feature::kMetadataEnable, enable), ResultMap::kSwitch);
}

unsigned int vxsys_GetRawMetaDataInfo(unsigned int* timestampCount, long long* ticks, unsigned int index)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!isImplemented(camera.CoreHandle(), Feature::kMetadataEnable)) return RC_NOT_SUPPORTED;
  const auto repository = camera.Manager().GetTimestampRepository();
  if (!repository) return RC_NOT_AVAILABLE;

  long long accumulateCount = 0;
  if (ReadInt(camera.CoreHandle(), Feature::kAccumulateCount, accumulateCount) != VX_SUCCESS)
    return RC_FEATURE_ERROR;
  if (accumulateCount < 1) return RC_FEATURE_ERROR;

  std::int64_t timestamp = 0;
  if (repository->GetTimestamp(index / static_cast<std::uint64_t>(accumulateCount), timestamp) != 0)
    return RC_FEATURE_ERROR;
  WriteOutput(ticks, timestamp);
  WriteOutput(timestampCount, repository->Throughput());
  return RC_SUCCESS;
}

} // namespace EntryPoint
