// SPDX-License-Identifier: MIT
// Ranges of numbers: sorted, joined, written down.
#include "tools/TNumberRanges.h"

#include <algorithm>

namespace vxtool {

TNumberRanges::TNumberRanges(std::vector<TNumberRange> ranges)
{
  std::sort(ranges.begin(), ranges.end(),
            [](const TNumberRange& one, const TNumberRange& other) { return one.first < other.first; });
  for (const TNumberRange& range : ranges) {
    if (ranges_.empty() || range.first > ranges_.back().last + 1)
      ranges_.push_back(range);
    else
      ranges_.back().last = std::max(ranges_.back().last, range.last);
  }
}

void TNumberRanges::Add(long first, long last)
{
  if (!ranges_.empty() && ranges_.back().last + 1 == first)
    ranges_.back().last = last;
  else
    ranges_.push_back({first, last});
}

bool TNumberRanges::Has(long number) const
{
  return std::any_of(ranges_.begin(), ranges_.end(), [number](const TNumberRange& range) {
    return range.first <= number && number <= range.last;
  });
}

long TNumberRanges::Count() const
{
  long count = 0;
  for (const TNumberRange& range : ranges_) count += range.last - range.first + 1;
  return count;
}

std::string TNumberRanges::Text(std::size_t most) const
{
  std::string text;
  for (std::size_t index = 0; index < std::min(most, ranges_.size()); ++index) {
    const TNumberRange& range = ranges_[index];
    if (index > 0) text += ",";
    text += std::to_string(range.first);
    if (range.last > range.first) text += "-" + std::to_string(range.last);
  }
  return ranges_.size() > most ? text + ",..." : text;
}

} // namespace vxtool
