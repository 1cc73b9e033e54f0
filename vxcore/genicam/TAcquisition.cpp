// SPDX-License-Identifier: MIT
// Runs of a camera.
#include "vxcore/genicam/TAcquisition.h"

#include "vxcore/genicam/log.h"

#include <cstring>

namespace vxgenicam {

namespace {

constexpr std::size_t kMetadataBytes = 24; ///< what WriteMetadata() writes
constexpr std::uint32_t kEndOfChunks = 0;
constexpr std::uint32_t kTimestampChunk = 1;
constexpr std::uint64_t kLastShortId = 0xFFFF; ///< short frame numbers go on with 1
constexpr std::size_t kMaxFrameBytes = 1UL << 30;
constexpr std::chrono::seconds kLongSilence(1);

template <typename Number>
unsigned char* Put(unsigned char* to, Number number)
{
  std::memcpy(to, &number, sizeof number);
  return to + sizeof number;
}

} // namespace

std::size_t DeliveredBytes(std::size_t pixelBytes, bool hasMetadata)
{
  return pixelBytes + (hasMetadata ? kMetadataBytes : 0);
}

int TAcquisition::Start(ArvDevice* device, const TStreamOptions& options, const TRunSettings& settings,
                        const TFrameShape& shape, const TCrop& crop, std::size_t payloadBytes, std::string& error)
{
  stream_.reset();
  settings_ = settings;
  crop_ = crop;
  converter_.emplace(shape, crop, settings.encoding);
  payloadBytes = std::max(payloadBytes, shape.Bytes());
  if (payloadBytes > kMaxFrameBytes) {
    error = "it announces frames of " + std::to_string(payloadBytes) + " bytes";
    return VX_ERR_START_REFUSED;
  }
  for (const TQueued& one : queue_) {
    if (!HasRoom(one)) {
      error = "a queued buffer is smaller than an image";
      return VX_ERR_START_REFUSED;
    }
  }
  stream_ = TFrameStream::Make(device, options, payloadBytes, *wakeUp_, error);
  if (!stream_) return VX_ERR_START_REFUSED;
  images_ = 0;
  added_ = 0;
  framesLost_ = 0;
  lastFrameId_ = 0;
  started_ = TWakeUp::TClock::now();
  ++runNumber_;
  isRunning_ = true;
  return VX_SUCCESS;
}

void TAcquisition::Stop()
{
  if (!isRunning_) return;
  isRunning_ = false;
  wakeUp_->Wake();
  const auto time = TWakeUp::TClock::now() - started_;
  if (framesLost_ > 0)
    Log(ELog::Warning, "%lld frames were lost on the way from the camera, %lld images came%s", framesLost_,
        images_, images_ == 0 ? "; are its packets larger than the network carries (PacketSize)?" : "");
  else if (images_ == 0 && time > kLongSilence)
    Log(ELog::Warning,
        "no packet of a frame came in %.1f s: did the camera wait for a trigger, or does a firewall keep packets "
        "back?",
        std::chrono::duration<double>(time).count());
}

void TAcquisition::Close(TDeviceLock& lock)
{
  Stop();
  isClosed_ = true;
  queue_.clear();
  wakeUp_->Wake();
  waitersLeft_.wait(lock, [this] { return waiters_ == 0; });
}

TWakeUp::TClock::time_point TAcquisition::DeadlineOf(unsigned int timeoutMs)
{
  // "Without limit" is a century.
  const auto limit =
      timeoutMs == VX_INFINITE ? std::chrono::hours(24 * 36525) : std::chrono::milliseconds(timeoutMs);
  return TWakeUp::TClock::now() + limit;
}

void TAcquisition::WaitUnlocked(TDeviceLock& lock, std::uint64_t seen, TWakeUp::TClock::time_point deadline)
{
  ++waiters_;
  lock.unlock();
  wakeUp_->WaitAfter(seen, deadline);
  lock.lock();
  if (--waiters_ == 0 && isClosed_) waitersLeft_.notify_all();
}

/// Fills the first queued buffer with the next image. Frames are left in the stream while no buffer is queued.
bool TAcquisition::Deliver(unsigned char** buffer, int* sizeBytes)
{
  if (!isRunning_ || IsComplete()) return false;
  while (!queue_.empty()) {
    ArvBuffer* const frame = stream_->Take();
    if (!frame) return false;
    const TQueued target = queue_.front();
    const bool isWhole = HasRoom(target) && Accept(frame, target.bytes);
    stream_->Return(frame, settings_.incomplete == EIncomplete::Deliver);
    if (!isWhole) continue;
    queue_.pop_front();
    ++images_;
    *buffer = target.bytes;
    *sizeBytes = static_cast<int>(ImageSizeBytes());
    return true;
  }
  return false;
}

/// Converts a frame, or adds it to the sum. False while the image is not whole.
bool TAcquisition::Accept(ArvBuffer* frame, unsigned char* image)
{
  const bool isComplete = arv_buffer_get_status(frame) == ARV_BUFFER_STATUS_SUCCESS;
  const bool isDelivered = isComplete || settings_.incomplete == EIncomplete::Deliver;
  std::size_t bytes = 0;
  const auto* const pixels = static_cast<const unsigned char*>(arv_buffer_get_data(frame, &bytes));
  CountGap(arv_buffer_get_frame_id(frame));
  if (!isComplete) ++framesLost_;
  if (!isDelivered || !pixels || (isComplete && !IsAsExpected(frame, bytes))) return false;
  if (added_ == 0) {
    const auto timeNs = static_cast<std::int64_t>(arv_buffer_get_timestamp(frame));
    if (!tickBaseNs_) tickBaseNs_ = timeNs;
    ticks_ = timeNs - *tickBaseNs_;
  }
  if (settings_.accumulations > 1) {
    converter_->Add(pixels);
    if (++added_ < settings_.accumulations) return false;
    added_ = 0;
    converter_->TakeSums(image);
  } else
    converter_->Convert(pixels, image);
  if (settings_.hasMetadata) WriteMetadata(image + converter_->ImageBytes(), converter_->ImageBytes());
  return true;
}

/// Whether a frame has the shape that the run began with; a camera may change it, or fill up its rows.
bool TAcquisition::IsAsExpected(ArvBuffer* frame, std::size_t bytes)
{
  const TFrameShape& expected = converter_->Shape();
  const auto format = PixelFormatOf(arv_buffer_get_image_pixel_format(frame));
  int columnPadding = 0;
  int rowPadding = 0;
  arv_buffer_get_image_padding(frame, &columnPadding, &rowPadding);
  TFrameShape shape{format.value_or(expected.format), static_cast<std::size_t>(arv_buffer_get_image_width(frame)),
                    static_cast<std::size_t>(arv_buffer_get_image_height(frame)),
                    static_cast<std::size_t>(std::max(columnPadding, 0))};
  const bool isSame = format && shape.format == expected.format && shape.width == expected.width &&
                      shape.height == expected.height && bytes >= shape.Bytes();
  if (!isSame) {
    Log(ELog::Warning,
        "a frame of %zu x %zu pixels of format 0x%08x, %zu bytes, is not what the run began with: dropped",
        shape.width, shape.height, arv_buffer_get_image_pixel_format(frame), bytes);
    ++framesLost_;
    return false;
  }
  if (!(shape == expected)) converter_.emplace(shape, crop_, settings_.encoding);
  return true;
}

/// Counts the frames of which nothing came since the last one.
void TAcquisition::CountGap(std::uint64_t frameId)
{
  if (lastFrameId_ != 0 && frameId != 0) {
    // Short numbers that fall by more than half of their range have begun again with 1.
    const bool hasBegunAgain = lastFrameId_ <= kLastShortId && frameId + kLastShortId / 2 < lastFrameId_;
    const std::uint64_t steps = frameId + (hasBegunAgain ? kLastShortId : 0) - lastFrameId_;
    if (frameId > lastFrameId_ || hasBegunAgain) framesLost_ += static_cast<long long>(steps) - 1;
  }
  lastFrameId_ = frameId;
}

void TAcquisition::WriteMetadata(unsigned char* tail, std::size_t imageBytes) const
{
  tail = Put(tail, kEndOfChunks);
  tail = Put(tail, static_cast<std::uint32_t>(imageBytes + sizeof kEndOfChunks));
  tail = Put(tail, ticks_);
  tail = Put(tail, kTimestampChunk);
  Put(tail, static_cast<std::uint32_t>(sizeof ticks_ + sizeof kTimestampChunk));
}

} // namespace vxgenicam
