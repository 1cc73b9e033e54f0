// SPDX-License-Identifier: MIT
// Stores each frame's timestamp and passes the frame on to another dispatch queue.
#pragma once

#include "acquisition/TDispatchQueue.h"
#include "acquisition/TMetadataParser.h"

class TTimestampRepository;

/// A dispatch queue in front of another: stores the timestamp that the camera put at the end of a frame and passes
/// the frame on. Made for one run by the acquisition manager; borrows the wrapped queue and the repository. A
/// frame without a well-formed timestamp is passed on, too.
class TMetadataXerox final : public TDispatchQueue
{
public:
  TMetadataXerox(TDispatchQueue* wrapped, TTimestampRepository* repository);

  void Initialise(std::int64_t imageSizeBytes) override;
  void Begin() override;
  void Finalise() override;
  void Abort() override;
  int Dispatch(unsigned char* buffer, int sizeBytes) override;
  unsigned char* GetLatestImage() override;
  unsigned char* GetImage8(int image) override;
  void ReleaseImage8(unsigned char* buffer) override;
  unsigned char* GetImage(int image) override;
  std::int64_t GetMinimumImageAvailable() override;
  std::int64_t GetMaximumImageAvailable() override;
  std::int64_t GetImageSizeBytes() override;
  void SetDispatchRoutine(IDispatchRoutine* routine) override;
  TFrameMemory AcquireImage(std::int64_t image) override;
  bool IsImageIntact(std::int64_t image, const unsigned char* frame) override;
  std::optional<std::int64_t> GetImageTicks(std::int64_t image) override;
  std::uint64_t RunNumber() override;
  bool IsSlot(const unsigned char* buffer) override;
  bool HasFailed() override;
  std::uint64_t Progress() override;

private:
  void StoreTimestamp(unsigned char* buffer, int sizeBytes);

  TDispatchQueue* wrapped_;
  TMetadataParser parser_;
  TTimestampRepository* repository_;
};
