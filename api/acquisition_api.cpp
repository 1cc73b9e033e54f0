// SPDX-License-Identifier: MIT
// Starting, stopping and waiting for an acquisition, and its status.
#include "acquisition/TRunCamera.h"
#include "api/entry_points.h"
#include "api/result_maps.h"
#include "api/TCameraUse.h"
#include "utility/outputs.h"
#include "utility/TQuorinEvent.h"
#include "utility/TQuorinLibDebugOutput.h"
#include "utility/TUnusedCall.h"

#include <cstdint>
#include <optional>

namespace EntryPoint {

using QuorinUtility::TQuorinLibDebugOutput;

namespace {

// Resets the cursor, also after a failed start.
class TCursorReset
{
public:
  explicit TCursorReset(const TCameraUse& camera) : camera_(camera) {}
  ~TCursorReset()
  {
    camera_.WithRetrievalCursor([](int& cursor) { cursor = 0; });
  }
  TCursorReset(const TCursorReset&) = delete;
  TCursorReset& operator=(const TCursorReset&) = delete;

private:
  const TCameraUse& camera_;
};

// A failing run sets its flag before it ends, so the flags are read last.
int StatusOf(TVxmcdAcquisitionManager& manager)
{
  const bool isRunning = manager.IsRunning();
  if (manager.IsTimedOut()) return RC_STATUS_TIMED_OUT;
  if (manager.IsHardwareOverflow()) return RC_STATUS_HARDWARE_OVERFLOW;
  if (manager.IsSpoolIssues()) return RC_STATUS_SPOOL_ISSUE;
  return isRunning ? RC_ACQUIRING : RC_IDLE;
}

// Nothing refuses a second run, whose frames only independent cameras have for themselves.
void WarnOfOtherRun(const TCameraUse& camera)
{
  if (!TQuorinLibDebugOutput::IsEnabled(TQuorinLibDebugOutput::Warning) || TRunCamera::IsNextIndependent()) return;
  if (const std::optional<long> other = FindOtherRun(camera.Record()))
    TQuorinLibDebugOutput::Output(
        __FILE__, __LINE__, "StartAcquisition", TQuorinLibDebugOutput::Warning,
        "camera %ld is started while camera %ld acquires: both runs now fetch frames from the "
        "current camera, so both lose frames; abort one of them, or call vxmcd_SetIndependentCameras(1) or set "
        "VXMCD_INDEPENDENT_CAMERAS=1 before they are started",
        CurrentCameraHandle(), *other);
}

} // namespace

unsigned int StartAcquisition(void)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  WarnOfOtherRun(camera);
  const TCursorReset reset(camera);
  if (camera.AcquisitionMode().ApplyPending() != TPseudoAcquisitionMode::kAccepted) return RC_START_REFUSED;
  return ToResultCode(camera.Manager().Start(), ResultMap::kStart);
}

unsigned int AbortAcquisition(void)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return ToResultCode(camera.Manager().Stop(), ResultMap::kAbort);
}

unsigned int WaitForAcquisition(void)
{
  return WaitForAcquisitionByHandle(CurrentCameraHandle());
}

unsigned int WaitForAcquisitionTimeOut(int timeoutMs)
{
  return WaitForAcquisitionByHandleTimeOut(CurrentCameraHandle(), timeoutMs);
}

unsigned int WaitForAcquisitionByHandle(long handle)
{
  return WaitForAcquisitionByHandleTimeOut(handle, QuorinUtility::TQuorinEvent::Infinite);
}

unsigned int WaitForAcquisitionByHandleTimeOut(long handle, int timeoutMs)
{
  if (handle == -1) return RC_NOT_INITIALIZED;
  const TCameraUse camera(handle);
  if (!camera) return RC_NOT_INITIALIZED;
  return ToResultCode(camera.Manager().Wait(timeoutMs), RC_NO_NEW_DATA);
}

unsigned int CancelWait(void)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  camera.Manager().CancelWait();
  return RC_SUCCESS;
}

unsigned int GetStatus(int* status)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  WriteOutput(status, StatusOf(camera.Manager()));
  return RC_SUCCESS;
}

unsigned int GetAcquisitionProgress(long* accumulations, long* series)
{
  WriteOutput(accumulations, 0);
  WriteOutput(series, 0);
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;

  const int status = StatusOf(camera.Manager());
  const auto queue = camera.Manager().SharedDispatchQueue();
  const std::int64_t newest = queue ? queue->GetMaximumImageAvailable() : 0;
  const bool isComplete = status == RC_ACQUIRING && newest == camera.AcquisitionMode().GetSeriesLength();
  if (status != RC_IDLE && !isComplete) WriteOutput(series, newest);
  return RC_SUCCESS;
}

unsigned int GetSizeOfCircularBuffer(long* size)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  WriteOutput(size, camera.Manager().GetCircularBufferSize());
  return RC_SUCCESS;
}

unsigned int FreeInternalMemory(void)
{
  const TCameraUse camera;
  if (camera) camera.Manager().FreeInternalMemory();
  return RC_SUCCESS;
}

unsigned int createAcquisitionEvents(void)
{
  static constinit TUnusedCall call(__func__, "20002 RC_SUCCESS", "there are no such events");
  call.Note();
  return RC_SUCCESS;
}

} // namespace EntryPoint
