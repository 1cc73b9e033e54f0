// SPDX-License-Identifier: MIT
// Reads the index record by record and keeps those that are whole.
#include "tools/TSpoolIndex.h"

#include "tools/ImageChecksum.h"
#include "tools/TInputFile.h"
#include "tools/TInterrupt.h"
#include "tools/TSpoolRun.h"

#include <algorithm>
#include <cstring>

namespace vxtool {

namespace {

constexpr std::size_t kRecordBytes = 32;
constexpr std::size_t kCheckedBytes = 24; // of a record, by the checksum behind them
constexpr std::size_t kReadBytes = 2048 * kRecordBytes;
// That a file may have above those of all images, damaged or repeated; what lies behind them is not read.
constexpr std::size_t kSpareRecords = 32768;

template <typename Number>
Number FieldAt(TPixelBytes record, std::size_t offset)
{
  Number value;
  std::memcpy(&value, record.data() + offset, sizeof value);
  return value;
}

std::int64_t PiecesIn(std::uint64_t bytes)
{
  return static_cast<std::int64_t>((bytes + kRecordBytes - 1) / kRecordBytes);
}

} // namespace

bool TSpoolIndex::Read(const std::string& directory, std::int64_t imageLimit)
{
  TInputFile file;
  const std::string path = directory + "/" + kSpoolIndexName;
  if (!file.Open(path)) {
    isMissing_ = true;
    error_ = file.Error();
    return false;
  }
  std::vector<std::byte> block;
  const std::uint64_t most = (static_cast<std::uint64_t>(imageLimit) + kSpareRecords) * kRecordBytes;
  const std::uint64_t end = std::min(file.Length(), most);
  damaged_ = PiecesIn(file.Length() - end);
  for (std::uint64_t offset = 0; offset < end; offset += block.size()) {
    if (TInterrupt::Happened()) {
      error_ = path + ": reading was interrupted";
      break;
    }
    const std::uint64_t used = file.NextNonzero(offset, end) / kRecordBytes * kRecordBytes; // behind a hole
    if (used >= end) {
      damaged_ += PiecesIn(end - offset);
      break;
    }
    damaged_ += PiecesIn(used - offset);
    offset = used;
    block.resize(std::min<std::uint64_t>(kReadBytes, end - offset));
    if (!file.ReadAt(offset, block)) {
      error_ = file.Error();
      break;
    }
    for (std::size_t start = 0; start < block.size(); start += kRecordBytes) {
      const TPixelBytes record = TPixelBytes(block).subspan(start, std::min(kRecordBytes, block.size() - start));
      const bool isWhole = record.size() == kRecordBytes &&
                           FieldAt<std::uint64_t>(record, 24) == ImageChecksum(record.first(kCheckedBytes));
      const auto image = isWhole ? FieldAt<std::uint64_t>(record, 0) : 0;
      if (isWhole && image < static_cast<std::uint64_t>(imageLimit))
        records_.push_back({static_cast<std::int64_t>(image), FieldAt<std::uint64_t>(record, 8),
                            FieldAt<std::int64_t>(record, 16)});
      else
        ++damaged_;
    }
  }
  const auto isBefore = [](const TRecord& one, const TRecord& other) { return one.image < other.image; };
  const auto isSame = [](const TRecord& one, const TRecord& other) { return one.image == other.image; };
  std::stable_sort(records_.begin(), records_.end(), isBefore); // of several records for an image the first counts
  const auto rest = std::unique(records_.begin(), records_.end(), isSame);
  damaged_ += records_.end() - rest;
  records_.erase(rest, records_.end());
  return error_.empty();
}

std::vector<TSpoolIndex::TRecord>::const_iterator TSpoolIndex::At(std::int64_t image) const
{
  return std::lower_bound(records_.begin(), records_.end(), image,
                          [](const TRecord& record, std::int64_t wanted) { return record.image < wanted; });
}

std::int64_t TSpoolIndex::NextAt(std::int64_t image) const
{
  const auto found = At(image);
  return found != records_.end() ? found->image : INT64_MAX;
}

const TSpoolIndex::TRecord* TSpoolIndex::Find(std::int64_t image) const
{
  const auto found = At(image);
  return found != records_.end() && found->image == image ? &*found : nullptr;
}

} // namespace vxtool
