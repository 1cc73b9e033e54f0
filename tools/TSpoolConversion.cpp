// SPDX-License-Identifier: MIT
// Image by image: record, bytes, checksum, pixels, output.
#include "tools/TSpoolConversion.h"

#include "tools/ImageChecksum.h"
#include "tools/Options.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace vxtool {

namespace {

constexpr std::size_t kMostProblems = 5;

bool IsAllZeros(TPixelBytes bytes)
{
  return bytes.empty() ||
         (bytes[0] == std::byte{0} && std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0);
}

bool IsPacedRun(const TSpoolRun& run)
{
  const std::optional<Trigger> trigger = TriggerOf(run.RunFacts().trigger);
  return trigger && IsPaced(*trigger);
}

} // namespace

bool TConversionCounts::AddsUp() const
{
  const long taken = written + notWritten;
  return asked == right + unchecked + wrong + unrecorded + unreadable + notReached && written >= 0 &&
         notWritten >= 0 && taken <= right + unchecked + wrong;
}

TSpoolConversion::TSpoolConversion(const TSpoolRun& run, const TSpoolIndex& index,
                                   const TConversionSettings& settings, IImageWriter* writer,
                                   std::function<bool()> isInterrupted,
                                   std::function<void(const TProgress&)> onProgress)
    : run_(run),
      index_(index),
      settings_(settings),
      writer_(writer),
      isInterrupted_(std::move(isInterrupted)),
      onProgress_(std::move(onProgress)),
      files_(run.Directory(), run.Facts().imagesPerFile, run.Facts().imageBytes),
      asked_(settings.images.IsEmpty() ? WholeRun() : settings.images),
      isPaced_(IsPacedRun(run)),
      clocks_(isPaced_)
{
  counts_.asked = asked_.Count();
  // The clock tells of lost frames only where images follow each other.
  isClockWhole_ = asked_.Ranges().size() == 1;
}

// What is looked for without an index ends at the last image that is not all zeros: image files have places for
// images to come. A place that cannot be read may have held one.
TNumberRanges TSpoolConversion::WholeRun()
{
  const std::int64_t known = std::max(index_.End(), run_.Facts().imagesWritten);
  std::int64_t end = known;
  if (settings_.isSalvage && TakesUnrecorded()) {
    std::vector<std::byte> frame;
    end = std::max(known, std::min(files_.End(), run_.ImageLimit()));
    while (end > known && !isInterrupted_() && IsNeverWritten(end - 1, frame)) --end;
  }
  TNumberRanges all;
  return end > 0 ? TNumberRanges({{1, static_cast<long>(end)}}) : all;
}

bool TSpoolConversion::IsNeverWritten(std::int64_t image, std::vector<std::byte>& frame)
{
  return files_.ReadImage(image, frame) && IsAllZeros(frame);
}

// An index says which images are there. Without one, an image may be whole all the same.
bool TSpoolConversion::TakesUnrecorded() const
{
  return index_.IsMissing() && (settings_.isSalvage || run_.Facts().state == SpoolState::Complete);
}

RunEnd TSpoolConversion::Run()
{
  start_ = Clock::now();
  RunEnd end = RunEnd::Complete;
  for (const TNumberRange& range : asked_.Ranges()) {
    for (long number = range.first; number <= range.last && end == RunEnd::Complete; ++number) {
      if (isInterrupted_())
        end = RunEnd::Interrupted;
      else if (!TakeImage(number))
        end = RunEnd::OutputFailed;
      Report();
    }
  }
  counts_.notReached = counts_.asked - counts_.right - counts_.unchecked - counts_.Missing();
  seconds_ = std::chrono::duration<double>(Clock::now() - start_).count();
  return end;
}

void TSpoolConversion::CountAbsent(long number, long& count)
{
  ++count;
  absent_.Add(number);
  isClockWhole_ = false;
}

// False when the output has failed.
bool TSpoolConversion::TakeImage(long number)
{
  const std::int64_t image = number - 1;
  const TSpoolIndex::TRecord* const record = index_.Find(image);
  if (!record && !TakesUnrecorded()) {
    CountAbsent(number, counts_.unrecorded);
    return true;
  }
  if (!files_.ReadImage(image, frame_)) {
    CountAbsent(number, counts_.unreadable);
    const bool isKnown = std::find(problems_.begin(), problems_.end(), files_.Error()) != problems_.end();
    if (!isKnown && problems_.size() < kMostProblems) problems_.push_back(files_.Error());
    return true;
  }
  TImageLabel label;
  label.number = number;
  label.check = ImageCheck::Unchecked;
  if (record) {
    label.hostNanoseconds = record->hostNanoseconds;
    label.check = ImageChecksum(frame_) == record->checksum ? ImageCheck::Right : ImageCheck::Wrong;
  } else if (settings_.isSalvage && IsAllZeros(frame_)) {
    CountAbsent(number, counts_.unrecorded);
    return true;
  }
  if (label.check == ImageCheck::Wrong) {
    ++counts_.wrong;
    wrong_.Add(number);
    isClockWhole_ = false;
    if (!settings_.keepsDamaged) return true;
  } else
    ++(record ? counts_.right : counts_.unchecked);
  return HandOn(label);
}

bool TSpoolConversion::HandOn(TImageLabel label)
{
  if (run_.Facts().hasMetadata) label.ticks = FrameTicks(frame_);
  isClockWhole_ = isClockWhole_ && label.ticks;
  if (label.ticks) clocks_.Timestamp(*label.ticks);
  if (!run_.Layout() || (!writer_ && !settings_.keepsLast)) return true;
  const TImageShape shape = {run_.Layout()->width, run_.Layout()->height, settings_.depth};
  // Frames that are the pixels already are not copied, only cut, which drops padding at their end and metadata.
  std::vector<std::byte>& pixels = IsPlainFrame(*run_.Layout(), settings_.depth) ? frame_ : pixels_;
  pixels.resize(shape.Bytes());
  if (&pixels != &frame_ && DecodeFrame(frame_, *run_.Layout(), settings_.depth, pixels)) ++counts_.cut;
  const bool isWritten = writer_ && writer_->Write(pixels, label);
  if (writer_) ++(isWritten ? counts_.written : counts_.notWritten);
  if (settings_.keepsLast) lastImage_.swap(pixels);
  lastLabel_ = label;
  return isWritten || !writer_;
}

void TSpoolConversion::TakeBackWritten(long count)
{
  counts_.written -= count;
  counts_.notWritten += count;
}

TRunTotals TSpoolConversion::Totals() const
{
  TRunTotals totals;
  totals.delivered = static_cast<long>(std::max(index_.Count(), run_.Facts().imagesWritten));
  if (isClockWhole_ && isPaced_ && counts_.notReached == 0) totals.lostInCamera = clocks_.LostInCameraSoFar();
  return totals;
}

void TSpoolConversion::Report()
{
  TProgress progress;
  progress.seconds = std::chrono::duration<double>(Clock::now() - start_).count();
  progress.fetched = counts_.right + counts_.unchecked + counts_.Missing();
  progress.wanted = counts_.asked;
  progress.lost = counts_.Missing();
  progress.imageBytes = static_cast<std::size_t>(run_.Facts().imageBytes);
  onProgress_(progress);
}

} // namespace vxtool
