// SPDX-License-Identifier: MIT
// The queue of finite runs whose frames go to the disk.
#pragma once

#include "acquisition/TMetadataParser.h"
#include "acquisition/TRingDispatchQueue.h"
#include "features/current_core_handle.h"
#include "spool/TSpoolLayout.h"
#include "utility/TMutex.h"

#include <cstdint>
#include <memory>

class TSpoolPipeline;

/// Counts each frame, has it written to the disk, and requeues its slot with the camera once its content is no
/// longer needed there, so that a run may be longer than the ring. Until the slot is used again, the image can be
/// retrieved as from the other queues. Owned by the acquisition manager.
class TDispatchQueue_Spool final : public TRingDispatchQueue
{
public:
  explicit TDispatchQueue_Spool(TCircularBuffer* circularBuffer, int coreHandle = kNoCoreHandle)
      : TRingDispatchQueue(circularBuffer, coreHandle)
  {
  }

  /// Settings and number of images of the run to come. No run may be in progress.
  void SetRun(const TSpoolSettings& settings, int images);

  /// Makes the directory and locks it. What fails here or in Begin() shows at the first frame.
  void Initialise(std::int64_t imageSizeBytes) override;
  /// Replaces the earlier run in the directory. Takes some 0.1 ms for each of its files.
  void Begin() override;
  /// Blocks until every frame is on the disk.
  void Finalise() override;
  /// Frames whose writing has not begun are dropped.
  void Abort() override;
  /// Blocks while the disk is too slow. Non-zero when the frame, or one before it, could not be written. What a short
  /// frame leaves of its slot is cleared, so that nothing of an earlier frame is written for it.
  int Dispatch(unsigned char* buffer, int sizeBytes) override;
  bool HasFailed() override;
  /// Increases with each piece of at most 8 MiB that is written or synced.
  std::uint64_t Progress() override;

private:
  std::shared_ptr<TSpoolPipeline> Pipeline();
  void ClearTail(unsigned char* buffer, int sizeBytes);
  void KeepFirstTick(TSpoolPipeline& pipeline, unsigned char* buffer, int sizeBytes);

  TMetadataParser parser_;
  TSpoolSettings settings_;
  std::uint32_t seriesLength_ = 1;
  bool withMetadata_ = false;
  TMutex mutex_;
  std::shared_ptr<TSpoolPipeline> pipeline_ GUARDED_BY(mutex_); // of the present or last run
};
