// SPDX-License-Identifier: MIT
// Walks the rows of a frame or of an output array.
#pragma once

#include <cstdint>

/// Steps from row to row through memory with rows of equal length. Used by TFetchImage, one for the stored
/// frame and one for the output; borrows the memory it walks. Reentrant. Reports refusal and end as null.
class TLineParser final
{
public:
  TLineParser(unsigned int rowLength, unsigned int rowCount) : rowLength_(rowLength), rowCount_(rowCount)
  {
    reset(nullptr);
  }

  void reset(unsigned char* start)
  {
    rowNumber_ = 0;
    row_ = start;
  }

  /// Whether all rows lie within @p size bytes.
  bool validImageSizeBytes(unsigned int size) const { return rowsFit(size); }

  /// The first row, or null when the rows do not lie within @p size bytes.
  unsigned char* GetFirstLine(unsigned char* start, unsigned int size) { return firstLineWithin(start, size); }

  bool noMoreLines() const { return rowNumber_ >= rowCount_ || !row_; }

  /// The next row, or null behind the last.
  unsigned char* GetNextLine()
  {
    ++rowNumber_;
    if (noMoreLines())
      reset(nullptr);
    else
      row_ += rowLength_;
    return row_;
  }

private:
  template <class Src, class Dst>
  friend class TFetchImage;

  bool rowsFit(std::uint64_t size) const { return std::uint64_t{rowCount_} * rowLength_ <= size; }

  // Frames of 4 GiB and more have a size that the public operation cannot take.
  unsigned char* firstLineWithin(unsigned char* start, std::uint64_t size)
  {
    reset(rowsFit(size) ? start : nullptr);
    return row_;
  }

  unsigned char* row_ = nullptr;
  unsigned int rowLength_;
  unsigned int rowCount_;
  unsigned int rowNumber_ = 0;
};
