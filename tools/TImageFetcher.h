// SPDX-License-Identifier: MIT
// Copies the images of a run out of the library's ring, one by one, and passes them to the output.
#pragma once

#include "tools/ICamera.h"
#include "tools/IImageWriter.h"
#include "tools/Run.h"

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace vxtool {

/// Fetches images by number, so that a skipped one is known. An image whose buffer may have been filled anew while it
/// was copied counts as overwritten and is not written. Borrows all that it is made with; one thread at a time.
/// Operations return false on failure, and Error() then says why, in one line.
class TImageFetcher final
{
public:
  /// @param writer  takes the images; may be null
  TImageFetcher(ICamera& camera, IImageWriter* writer, const TRunSettings& settings, TFrameStatistics& statistics);

  /// Asks which images are there, and counts those as overwritten that the ring does not have any more.
  bool Look();
  /// Whether the next image was there when Look() was called.
  bool HasNext() const { return isNextThere_; }
  bool TakeNext();
  /// Whether a failure was the output's, not the camera's.
  bool IsOutputFailed() const { return isOutputFailed_; }

  /// The newest image number seen.
  long Newest() const { return newest_; }
  /// The part of the ring that has images not fetched yet, 0 to 1.
  double RingFill() const;
  /// The newest intact image; empty when there was none.
  TPixelBytes LastImage() const { return lastImage_; }
  const TImageLabel& LastLabel() const { return lastLabel_; }
  const std::string& Error() const { return error_; }

private:
  void NoteArrivals(int last);
  bool Fail(const char* function, unsigned int code);
  void SkipOverwritten(int first, int last);
  /// Copies the image into fetched_; a result code.
  unsigned int Fetch(long number, long long& ticks);
  bool StartsAtZero() const;

  ICamera& camera_;
  IImageWriter* writer_;
  TRunSettings settings_;
  TFrameStatistics& statistics_;
  std::vector<std::byte> fetched_;   // being copied into
  std::vector<std::byte> sums_;      // the same with 32 bits, where the output has fewer
  std::vector<std::byte> lastImage_; // the newest intact one
  TImageLabel lastLabel_;
  std::string error_;
  bool isOutputFailed_ = false;
  bool isNextThere_ = false;
  int newest_ = 0;                    // image number
  std::deque<std::int64_t> arrivals_; // host times at which the images after the last one taken were seen
  int arrivedInTurn_ = 0;             // images that came while the last one was copied
  long ringSlots_ = 0;                // images that the ring has room for; 0 until it has overwritten one
};

} // namespace vxtool
