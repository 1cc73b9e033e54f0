// SPDX-License-Identifier: MIT
// The queue of finite runs whose frames go to the disk.
#include "acquisition/TDispatchQueue_Spool.h"

#include "acquisition/frame_timestamp.h"
#include "acquisition/TCircularBuffer.h"
#include "spool/TSpoolPipeline.h"
#include "utility/TQuorinLibDebugOutput.h"

#include <algorithm>
#include <cstring>
#include <utility>

using QuorinUtility::TQuorinLibDebugOutput;

void TDispatchQueue_Spool::SetRun(const TSpoolSettings& settings, int images)
{
  settings_ = settings;
  seriesLength_ = static_cast<std::uint32_t>(std::max(images, 0));
}

// The earlier run's pipeline is destroyed first: two at once would lock each other out of the directory.
void TDispatchQueue_Spool::Initialise(std::int64_t imageSizeBytes)
{
  TRingDispatchQueue::Initialise(imageSizeBytes);
  withMetadata_ = IsMetadataEnabled(CoreHandle());
  settings_.coreHandle = CoreHandle();
  settings_.slots = CircularBuffer().GetBufferCount();
  std::shared_ptr<TSpoolPipeline> earlier;
  {
    const TLock lock(mutex_);
    earlier = std::move(pipeline_);
  }
  earlier.reset();
  auto pipeline =
      std::make_shared<TSpoolPipeline>(settings_, static_cast<std::uint64_t>(imageSizeBytes), seriesLength_);
  const TLock lock(mutex_);
  pipeline_ = std::move(pipeline);
}

void TDispatchQueue_Spool::Begin()
{
  if (const auto pipeline = Pipeline()) pipeline->Begin();
}

void TDispatchQueue_Spool::Finalise()
{
  if (const auto pipeline = Pipeline()) pipeline->Finish();
}

void TDispatchQueue_Spool::Abort()
{
  if (const auto pipeline = Pipeline()) pipeline->Abort();
}

int TDispatchQueue_Spool::Dispatch(unsigned char* buffer, int sizeBytes)
{
  if (buffer) ClearTail(buffer, sizeBytes); // before it may be read
  if (!CountFrame(buffer)) return 0;
  const std::int64_t image = GetMaximumImageAvailable();
  if (sizeBytes != GetImageSizeBytes())
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, TQuorinLibDebugOutput::Warning,
                                  "image %lld has %d bytes and is written as one of %lld",
                                  static_cast<long long>(image), sizeBytes,
                                  static_cast<long long>(GetImageSizeBytes()));
  const auto pipeline = Pipeline();
  if (!pipeline) return 1;
  if (image == 1 && withMetadata_) KeepFirstTick(*pipeline, buffer, sizeBytes);
  if (!pipeline->Spool(static_cast<int>(image - 1), buffer)) return 1;
  if (!pipeline->RequeuesSlots()) RequeueSlot(buffer, sizeBytes);
  return 0;
}

void TDispatchQueue_Spool::ClearTail(unsigned char* buffer, int sizeBytes)
{
  const std::int64_t filled = std::clamp<std::int64_t>(sizeBytes, 0, GetImageSizeBytes());
  std::memset(buffer + filled, 0, static_cast<std::size_t>(GetImageSizeBytes() - filled));
}

// Without metadata, pixels may look like a timestamp.
void TDispatchQueue_Spool::KeepFirstTick(TSpoolPipeline& pipeline, unsigned char* buffer, int sizeBytes)
{
  const std::int64_t size = std::min<std::int64_t>(sizeBytes, GetImageSizeBytes());
  if (const TFrameTimestamp first = FindFrameTimestamp(parser_, buffer, size); first.location)
    pipeline.SetFirstFrameTick(first.ticks);
}

bool TDispatchQueue_Spool::HasFailed()
{
  const auto pipeline = Pipeline();
  return pipeline && pipeline->HasFailed();
}

std::uint64_t TDispatchQueue_Spool::Progress()
{
  const auto pipeline = Pipeline();
  return pipeline ? pipeline->Progress() : 0;
}

std::shared_ptr<TSpoolPipeline> TDispatchQueue_Spool::Pipeline()
{
  const TLock lock(mutex_);
  return pipeline_;
}
