// SPDX-License-Identifier: MIT
// The queue of finite runs whose frames go to the disk.
#include "acquisition/TDispatchQueue_Spool.h"

#include "acquisition/frame_timestamp.h"
#include "acquisition/TCircularBuffer.h"
#include "spool/TSpoolPipeline.h"
#include "utility/TQuorinLibDebugOutput.h"

#include <algorithm>
#include <optional>
#include <utility>

using QuorinUtility::TQuorinLibDebugOutput;

void TDispatchQueue_Spool::SetSpoolPath(const char* path)
{
  const std::lock_guard lock(mutex_);
  settings_.path = path ? path : "";
}

void TDispatchQueue_Spool::SetSpoolMethod(int method)
{
  const std::lock_guard lock(mutex_);
  settings_.method = method;
}

void TDispatchQueue_Spool::SetSpoolThreadCount(int threadCount)
{
  const std::lock_guard lock(mutex_);
  settings_.threadCount = threadCount;
}

void TDispatchQueue_Spool::SetSeriesLength(int images)
{
  const std::lock_guard lock(mutex_);
  seriesLength_ = static_cast<std::uint32_t>(std::max(images, 0));
}

// The earlier run's pipeline goes first: two at once would hold each other's directory. Making one may take long,
// when many files have to be removed, and nobody who changes a setting should wait for that.
void TDispatchQueue_Spool::Initialise(std::int64_t imageSizeBytes)
{
  TRingDispatchQueue::Initialise(imageSizeBytes);
  TSpoolSettings settings;
  std::uint32_t seriesLength = 0;
  std::shared_ptr<TSpoolPipeline> earlier;
  {
    const std::lock_guard lock(mutex_);
    earlier = std::move(pipeline_);
    settings = settings_;
    seriesLength = seriesLength_;
  }
  earlier.reset();
  settings.slots = CircularBuffer().GetBufferCount();
  auto pipeline =
      std::make_shared<TSpoolPipeline>(settings, static_cast<std::uint64_t>(imageSizeBytes), seriesLength);
  const std::lock_guard lock(mutex_);
  pipeline_ = std::move(pipeline);
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
  if (!CountFrame(buffer)) return 0;
  const std::int64_t image = GetMaximumImageAvailable();
  if (sizeBytes != GetImageSizeBytes())
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, TQuorinLibDebugOutput::Warning,
                                  "image %lld has %d bytes and is written with %lld",
                                  static_cast<long long>(image), sizeBytes,
                                  static_cast<long long>(GetImageSizeBytes()));
  const auto pipeline = Pipeline();
  if (!pipeline) return 1;
  if (image == 1) {
    const std::optional<std::int64_t> tick =
        FrameTimestamp(parser_, buffer, std::min<std::int64_t>(sizeBytes, GetImageSizeBytes()));
    if (tick) pipeline->SetFirstFrameTick(*tick);
  }
  if (!pipeline->Spool(static_cast<int>(image - 1), buffer)) return 1;
  if (!pipeline->ReturnsSlots()) GiveBack(buffer, sizeBytes);
  return 0;
}

bool TDispatchQueue_Spool::HasFailed()
{
  const auto pipeline = Pipeline();
  return pipeline && pipeline->HasFailed();
}

std::shared_ptr<TSpoolPipeline> TDispatchQueue_Spool::Pipeline()
{
  const std::lock_guard lock(mutex_);
  return pipeline_;
}
