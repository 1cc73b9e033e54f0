// SPDX-License-Identifier: MIT
// Takes the images of a recorded run from disk, checks each and passes it to the output.
#pragma once

#include "runs/TRunDescription.h"
#include "runs/TRunImages.h"
#include "runs/TRunIndex.h"
#include "tools/IImageWriter.h"
#include "tools/Run.h"
#include "tools/TFrameStatistics.h"
#include "tools/TNumberRanges.h"
#include "tools/TReadAhead.h"
#include "tools/TRunFollower.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vxtool {

/// What to take.
struct TConversionSettings
{
  TNumberRanges images; ///< numbers from 1; empty: all that the run is known to have
  PixelDepth depth = PixelDepth::Bits16;
  /// Looks for images that have no record, too: those that are not all zeros. Without any record they are taken.
  bool isSalvage = false;
  bool keepsDamaged =
      false;              ///< passes on images whose checksum is wrong; with salvage also those without a record
  bool keepsLast = false; ///< LastImage() is wanted
};

/// What became of the images asked for.
struct TConversionCounts
{
  long asked = 0;
  long right = 0;          ///< their checksum is right
  long unchecked = 0;      ///< they have no checksum and were taken nevertheless
  long wrong = 0;          ///< their checksum is wrong
  long unrecorded = 0;     ///< the index does not know them
  long unreadable = 0;     ///< their file is missing or too short, or cannot be read
  long unrecordedData = 0; ///< of the unrecorded: not all zeros; looked for by salvage only
  long notReached = 0;     ///< the conversion ended before
  long written = 0;
  long notWritten = 0;    ///< taken, but not in the output
  long cut = 0;           ///< taken, but with pixels that do not fit into the depth
  long clippedPixels = 0; ///< these pixels

  long Missing() const { return wrong + unrecorded + unreadable; }
  bool AddsUp() const;
};

/// One conversion from start to end, on the caller's thread; another one reads large images ahead. Has memory for one image,
/// or two large ones. Borrows run, index, writer and callbacks until Run() returns. Every image is compared with the checksum of its record; one that is
/// torn or damaged is not passed on. Its number stays free: images keep the numbers of the run.
class TRunConversion final
{
public:
  /// @param writer  takes the images; null to look at them only. Needs a run with a layout
  TRunConversion(const TRunDescription& run, const TRunIndex& index, const TConversionSettings& settings,
                 IImageWriter* writer, std::function<bool()> isInterrupted,
                 std::function<void(const TProgress&)> onProgress);

  /// Takes images as they come, until the run is not recorded any more; Run() then looks for the others.
  void Follow(TRunFollower& follower);
  /// Complete, Interrupted or OutputFailed. Of a run that was replaced it leaves out what has not been taken.
  RunEnd Run();
  /// How a run that was followed has gone on.
  Growth LastGrowth() const { return growth_; }

  const TConversionCounts& Counts() const { return counts_; }
  /// Of an output file that turned out to have fewer images than were written to it.
  void MoveToNotWritten(long count);
  /// The counts of the run itself, for its files.
  TFrameCounts RunCounts() const;
  const TNumberRanges& Asked() const { return asked_; }
  /// Numbers of the images that are wrong, and of those that are not there.
  const TNumberRanges& Wrong() const { return wrong_; }
  const TNumberRanges& Absent() const { return absent_; }
  /// Why images could not be read, the first reasons.
  const std::vector<std::string>& Problems() const { return problems_; }
  /// The newest image passed on, if it was wanted; empty when there was none.
  TPixelBytes LastImage() const { return lastImage_; }
  const TImageLabel& LastLabel() const { return lastLabel_; }
  double Seconds() const { return seconds_; }

private:
  using Clock = std::chrono::steady_clock;

  RunEnd FollowRun();
  /// Waits for an image; false when no more will come, or is waited for.
  bool WaitFor(std::int64_t image);
  /// What the run has, by what is known of it now.
  void AskForWhatIsThere();
  /// Numbers of all images that the run may have.
  TNumberRanges WholeRun() const;
  bool TakesUnrecorded() const;
  /// Counts images without a record, from @p number on, as unrecorded. Returns the next number below @p end that may
  /// be taken, or @p end.
  long SkipAbsent(long number, long end);
  long NextCandidate(long number, long end);
  long NextWithData(long number, long end);
  /// Takes an image; @p number becomes that of the next one.
  bool TakeImage(long& number, long last);
  void ReadAheadWhereItGains();
  bool Read(std::int64_t image);
  bool PassOn(TImageLabel label);
  void CountAbsent(long first, long last, long& count);
  void Report();

  const TRunDescription& run_;
  const TRunIndex& index_;
  TConversionSettings settings_;
  IImageWriter* writer_;
  std::function<bool()> isInterrupted_;
  std::function<void(const TProgress&)> onProgress_;
  TRunImages files_;
  std::unique_ptr<TReadAhead> ahead_; // null where it would gain nothing
  long known_;                        // images that index and description know of
  TNumberRanges asked_;
  TNumberRanges wrong_;
  TNumberRanges absent_;
  TConversionCounts counts_;
  bool hasSteadyRate_;
  TFrameStatistics clocks_;  // finds frames lost in the camera, by the timestamps of the images
  bool isClockWhole_ = true; // every image so far had one, without gaps in the numbers
  std::vector<std::string> problems_;
  TStoredImage stored_;
  std::vector<std::byte> pixels_;
  std::vector<std::byte> lastImage_;
  TImageLabel lastLabel_;
  TRunFollower* follower_ = nullptr;
  Growth growth_ = Growth::Recording;
  long next_ = 1; // images below it have been dealt with
  Clock::time_point start_;
  double seconds_ = 0.0;
};

} // namespace vxtool
