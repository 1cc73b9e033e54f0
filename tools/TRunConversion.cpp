// SPDX-License-Identifier: MIT
// Image by image: record, bytes, checksum, pixels, output.
#include "tools/TRunConversion.h"

#include "runs/checksum.h"
#include "tools/ImageData.h"
#include "tools/Options.h"

#include <algorithm>
#include <system_error>
#include <thread>
#include <utility>

namespace vxtool {

namespace {

constexpr std::size_t kMaxProblems = 5;
constexpr std::int64_t kLeastBytesAhead = 1 << 20; // below, handing images over takes longer than reading them
constexpr auto kPollInterval = std::chrono::milliseconds(50);

bool HasSteadyRate(const TRunDescription& run)
{
  const std::optional<Trigger> trigger = TriggerOf(FactsOf(run).trigger);
  return trigger && vxtool::HasSteadyRate(*trigger);
}

} // namespace

bool TConversionCounts::AddsUp() const
{
  const long taken = written + notWritten;
  return asked == right + unchecked + wrong + unrecorded + unreadable + notReached && written >= 0 &&
         unrecordedData <= unrecorded && notWritten >= 0 && taken <= right + unchecked + wrong;
}

TRunConversion::TRunConversion(const TRunDescription& run, const TRunIndex& index,
                               const TConversionSettings& settings, IImageWriter* writer,
                               std::function<bool()> isInterrupted,
                               std::function<void(const TProgress&)> onProgress)
    : run_(run),
      index_(index),
      settings_(settings),
      writer_(writer),
      isInterrupted_(std::move(isInterrupted)),
      onProgress_(std::move(onProgress)),
      files_(run.Directory(), run.Values().imagesPerFile, run.Values().imageBytes),
      known_(static_cast<long>(std::max(index.End(), run.Values().imagesWritten))),
      asked_(settings.images.IsEmpty() ? WholeRun() : settings.images),
      hasSteadyRate_(HasSteadyRate(run)),
      clocks_(hasSteadyRate_)
{
  counts_.asked = asked_.Count();
  // The clock shows lost frames only where images follow each other.
  isClockWhole_ = asked_.Ranges().size() == 1;
}

// Image files have places for images to come: Run() leaves out those behind the last image.
TNumberRanges TRunConversion::WholeRun() const
{
  const long places = static_cast<long>(std::min(files_.End(), run_.ImageLimit()));
  const long end = settings_.isSalvage ? std::max(known_, places) : known_;
  return end > 0 ? TNumberRanges({{1, end}}) : TNumberRanges();
}

// An index says which images are there. Without any record, an image may be whole nevertheless.
bool TRunConversion::TakesUnrecorded() const
{
  if (settings_.isSalvage) return index_.Count() == 0 || settings_.keepsDamaged;
  return index_.IsMissing() && run_.Values().state == RunFormat::State::kComplete;
}

RunEnd TRunConversion::Run()
{
  start_ = Clock::now();
  ReadAheadWhereItGains();
  RunEnd end = follower_ ? FollowRun() : RunEnd::Complete;
  const std::vector<TNumberRange> ranges =
      growth_ == Growth::Replaced ? std::vector<TNumberRange>() : asked_.Ranges();
  for (const TNumberRange& range : ranges) {
    for (long number = std::max(range.first, next_); number <= range.last && end == RunEnd::Complete;) {
      if (isInterrupted_()) {
        end = RunEnd::Interrupted;
        break;
      }
      number = SkipAbsent(number, range.last + 1);
      if (number <= range.last && !TakeImage(number, range.last)) end = RunEnd::OutputFailed;
      Report();
    }
  }
  counts_.notReached = counts_.asked - counts_.right - counts_.unchecked - counts_.Missing();
  seconds_ = std::chrono::duration<double>(Clock::now() - start_).count();
  return end;
}

void TRunConversion::Follow(TRunFollower& follower)
{
  follower_ = &follower;
  if (!settings_.images.IsEmpty()) return;
  const std::optional<std::int64_t> expected = run_.Values().imagesExpected;
  asked_ = expected ? TNumberRanges({{1, static_cast<long>(*expected)}}) : TNumberRanges();
  counts_.asked = asked_.Count();
  isClockWhole_ = true;
}

RunEnd TRunConversion::FollowRun()
{
  RunEnd end = RunEnd::Complete;
  const TNumberRanges wanted =
      settings_.images.IsEmpty() ? TNumberRanges({{1, static_cast<long>(run_.ImageLimit())}}) : settings_.images;
  for (const TNumberRange& range : wanted.Ranges()) {
    for (next_ = range.first; next_ <= range.last && end == RunEnd::Complete;) {
      if (!WaitFor(next_ - 1)) {
        if (isInterrupted_()) end = RunEnd::Interrupted;
        AskForWhatIsThere();
        return end;
      }
      if (!TakeImage(next_, range.last)) end = RunEnd::OutputFailed;
      Report();
    }
    if (end != RunEnd::Complete) break;
  }
  const bool isToTheEnd =
      end == RunEnd::Complete && settings_.images.IsEmpty(); // all images are there: it is near
  while (isToTheEnd && growth_ == Growth::Recording && !isInterrupted_()) {
    std::this_thread::sleep_for(kPollInterval);
    growth_ = follower_->Update();
  }
  AskForWhatIsThere();
  return end;
}

bool TRunConversion::WaitFor(std::int64_t image)
{
  while (growth_ == Growth::Recording && !isInterrupted_()) {
    if (index_.Find(image) && files_.HasPlace(image)) return true;
    growth_ = follower_->Update();
    if (growth_ != Growth::Recording) return false;
    if (index_.Find(image) && files_.HasPlace(image)) return true;
    Report();
    std::this_thread::sleep_for(kPollInterval);
  }
  return false;
}

void TRunConversion::AskForWhatIsThere()
{
  files_.Refresh();
  known_ = static_cast<long>(std::max(index_.End(), run_.Values().imagesWritten));
  if (settings_.images.IsEmpty()) asked_ = WholeRun();
  counts_.asked = asked_.Count();
}

long TRunConversion::NextCandidate(long number, long end)
{
  const std::int64_t image = number - 1;
  std::int64_t next = index_.NextAt(image);
  if (TakesUnrecorded())
    next = settings_.isSalvage ? std::min(next, files_.NextUsed(image, index_.Count() == 0)) : image;
  return static_cast<long>(std::min<std::int64_t>(next, end - 1)) + 1;
}

long TRunConversion::SkipAbsent(long number, long end)
{
  const long next = NextCandidate(number, end);
  long newest = known_; // image that there is, as far as it is known
  long withData = 0;
  if (settings_.isSalvage && !TakesUnrecorded()) {
    for (long n = number; (n = NextWithData(n, next)) < next; ++n) {
      if (isInterrupted_()) return number;
      newest = std::max(newest, n);
      ++withData;
    }
  }
  const bool isBehindAll = next == end && settings_.images.IsEmpty() && newest < end - 1;
  if (isBehindAll) {
    newest = std::max(newest, number - 1);
    asked_ = newest > 0 ? TNumberRanges({{1, newest}}) : TNumberRanges();
    counts_.asked = newest;
  }
  const long last = isBehindAll ? newest : next - 1;
  if (last < number) return next;
  CountAbsent(number, last, counts_.unrecorded);
  counts_.unrecordedData += withData;
  return next;
}

long TRunConversion::NextWithData(long number, long end)
{
  return static_cast<long>(std::min<std::int64_t>(files_.NextUsed(number - 1, false), end - 1)) + 1;
}

void TRunConversion::CountAbsent(long first, long last, long& count)
{
  count += last - first + 1;
  absent_.Add(first, last);
  isClockWhole_ = false;
}

// False when the output has failed.
bool TRunConversion::TakeImage(long& next, long last)
{
  const long number = next++;
  const std::int64_t image = number - 1;
  const RunFormat::TIndexRecord* const record = index_.Find(image);
  if (!Read(image)) {
    // Without records, the images of a missing file cannot be told apart.
    const bool isAlone = index_.Count() > 0;
    if (!isAlone) next = static_cast<long>(std::min<std::int64_t>(files_.UnreadableEnd(), last)) + 1;
    CountAbsent(number, next - 1, counts_.unreadable);
    const bool isKnown = std::find(problems_.begin(), problems_.end(), files_.Error()) != problems_.end();
    if (!isKnown && problems_.size() < kMaxProblems) problems_.push_back(files_.Error());
    return true;
  }
  TImageLabel label;
  label.number = number;
  label.check = ImageCheck::Unchecked;
  if (record) {
    label.hostNanoseconds = record->hostTimeNs;
    label.check = stored_.checksum == record->checksum ? ImageCheck::Right : ImageCheck::Wrong;
  }
  if (ahead_ && next <= last && index_.Find(next - 1)) ahead_->Begin(next - 1);
  if (label.check == ImageCheck::Wrong) {
    ++counts_.wrong;
    wrong_.Add(number, number);
    isClockWhole_ = false;
    if (!settings_.keepsDamaged) return true;
  } else
    ++(record ? counts_.right : counts_.unchecked);
  return PassOn(label);
}

void TRunConversion::ReadAheadWhereItGains()
{
  const TRunValues& values = run_.Values();
  if (!writer_ || follower_ || values.imageBytes < kLeastBytesAhead) return;
  try {
    ahead_ = std::make_unique<TReadAhead>(run_.Directory(), values.imagesPerFile, values.imageBytes);
  } catch (const std::system_error&) { // no thread to be had: image by image then
  }
}

bool TRunConversion::Read(std::int64_t image)
{
  if (ahead_ && ahead_->Take(image, stored_)) return true;
  if (!files_.ReadImage(image, stored_.bytes)) return false;
  stored_.checksum = Checksum(stored_.bytes.data(), stored_.bytes.size());
  return true;
}

bool TRunConversion::PassOn(TImageLabel label)
{
  if (run_.Values().hasMetadata) label.ticks = FrameTicks(stored_.bytes);
  isClockWhole_ = isClockWhole_ && label.ticks;
  if (label.ticks) clocks_.AddTimestamp(*label.ticks);
  if (!run_.Layout() || (!writer_ && !settings_.keepsLast)) return true;
  const TImageShape shape = {run_.Layout()->width, run_.Layout()->height, settings_.depth};
  // Frames that are the pixels already are not copied, only shortened: padding at their end and metadata go.
  const bool isPlain = IsPlainFrame(*run_.Layout(), settings_.depth);
  std::vector<std::byte>& pixels = isPlain ? stored_.bytes : pixels_;
  pixels.resize(shape.Bytes());
  if (!isPlain) {
    const long clipped = DecodeFrame(stored_.bytes, *run_.Layout(), settings_.depth, pixels);
    counts_.cut += clipped > 0 ? 1 : 0;
    counts_.clippedPixels += clipped;
  }
  const bool isWritten = writer_ && writer_->Write(pixels, label);
  if (writer_) ++(isWritten ? counts_.written : counts_.notWritten);
  if (settings_.keepsLast) lastImage_.swap(pixels);
  lastLabel_ = label;
  return isWritten || !writer_;
}

void TRunConversion::MoveToNotWritten(long count)
{
  counts_.written -= count;
  counts_.notWritten += count;
}

TFrameCounts TRunConversion::RunCounts() const
{
  TFrameCounts counts;
  counts.delivered = static_cast<long>(std::max(index_.Count(), run_.Values().imagesWritten));
  if (isClockWhole_ && hasSteadyRate_ && counts_.notReached == 0)
    counts.lostInCamera = clocks_.LostInCameraSoFar();
  return counts;
}

void TRunConversion::Report()
{
  TProgress progress;
  progress.seconds = std::chrono::duration<double>(Clock::now() - start_).count();
  progress.fetched = counts_.right + counts_.unchecked + counts_.Missing();
  progress.wanted = counts_.asked;
  progress.lost = counts_.Missing();
  progress.imageBytes = static_cast<std::size_t>(run_.Values().imageBytes);
  onProgress_(progress);
}

} // namespace vxtool
