// SPDX-License-Identifier: MIT
// Sets of image numbers.
#pragma once

#include <string>
#include <vector>

namespace vxtool {

/// Numbers from first to last, both included.
struct TNumberRange
{
  long first = 0;
  long last = 0;
};

/// Image numbers as ascending ranges with gaps between them, which takes little memory where images next to each
/// other belong to one set. One thread at a time.
class TNumberRanges final
{
public:
  TNumberRanges() = default;
  /// Sorts ranges and joins those that touch or overlap.
  explicit TNumberRanges(std::vector<TNumberRange> ranges);

  /// Adds numbers above all others.
  void Add(long first, long last);
  const std::vector<TNumberRange>& Ranges() const { return ranges_; }
  bool Has(long number) const;
  bool IsEmpty() const { return ranges_.empty(); }
  long Count() const;
  /// "1-10,20", the form that the command line takes. @param most  ranges; when there are more, "..." follows
  std::string Text(std::size_t most = static_cast<std::size_t>(-1)) const;

private:
  std::vector<TNumberRange> ranges_;
};

} // namespace vxtool
