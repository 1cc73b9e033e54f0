// SPDX-License-Identifier: MIT
// Reads the images of a recorded run, one ahead of the caller.
#pragma once

#include "runs/TRunImages.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace vxtool {

/// An image as its file has it.
struct TStoredImage
{
  std::vector<std::byte> bytes;
  std::uint64_t checksum = 0;
};

/// Reads images and computes their checksums in a thread of its own, while the caller writes the one before. Has memory for
/// one image. Used by one thread.
class TReadAhead final
{
public:
  /// As TRunImages; what is added to the run later is not seen.
  TReadAhead(const std::string& directory, std::int64_t imagesPerFile, std::int64_t imageBytes);
  ~TReadAhead();
  TReadAhead(const TReadAhead&) = delete;
  TReadAhead& operator=(const TReadAhead&) = delete;

  /// Reads @p image next, from 0; at most one image is under way.
  void Begin(std::int64_t image);
  /// Waits for the image that was begun and exchanges it with @p stored. False when it was another one or could not be read;
  /// @p stored is as before then.
  bool Take(std::int64_t image, TStoredImage& stored);

private:
  void ReadImages();

  TRunImages files_;    // of the thread
  TStoredImage stored_; // of the thread while it reads
  std::mutex mutex_;
  std::condition_variable changed_;
  std::int64_t wanted_ = TRunImages::kNoImage; // guarded by mutex_; what the thread is to read or reads
  std::int64_t read_ = TRunImages::kNoImage;   // guarded by mutex_; what stored_ has
  bool isEnding_ = false;                      // guarded by mutex_
  std::thread thread_;
};

} // namespace vxtool
