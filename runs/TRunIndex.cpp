// SPDX-License-Identifier: MIT
// Reads the index record by record and keeps those that are whole.
#include "runs/TRunIndex.h"

#include "runs/checksum.h"
#include "runs/TInputFile.h"

#include <algorithm>
#include <climits>
#include <cstring>

namespace {

using RunFormat::TIndexRecord;

constexpr std::size_t kRecordBytes = sizeof(TIndexRecord);
constexpr std::size_t kReadRecords = 2048;
// Records that a file may have beyond those of all images, damaged or repeated; what follows them is not read.
constexpr std::size_t kSpareRecords = 32768;

std::int64_t PiecesIn(std::uint64_t bytes)
{
  return static_cast<std::int64_t>((bytes + kRecordBytes - 1) / kRecordBytes);
}

} // namespace

bool TRunIndex::Read(const std::string& directory, std::int64_t imageLimit,
                     const std::function<bool()>& isInterrupted)
{
  TInputFile file;
  const std::string path = directory + "/" + RunFormat::kIndexName;
  if (!file.Open(path)) {
    isMissing_ = true;
    error_ = file.Error();
    return false;
  }
  std::vector<std::byte> block;
  const std::uint64_t maxBytes = (static_cast<std::uint64_t>(imageLimit) + kSpareRecords) * kRecordBytes;
  const std::uint64_t end = std::min(file.Length(), maxBytes);
  damaged_ = PiecesIn(file.Length() - end);
  for (std::uint64_t offset = 0; offset < end; offset += block.size()) {
    if (isInterrupted && isInterrupted()) {
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
    block.resize(std::min<std::uint64_t>(kReadRecords * kRecordBytes, end - offset));
    if (!file.ReadAt(offset, block)) {
      error_ = file.Error();
      break;
    }
    for (std::size_t start = 0; start < block.size(); start += kRecordBytes) {
      TIndexRecord record{};
      const std::size_t size = std::min(kRecordBytes, block.size() - start);
      std::memcpy(&record, block.data() + start, size);
      const bool isWhole = size == kRecordBytes && record.number < static_cast<std::uint64_t>(imageLimit) &&
                           record.recordChecksum == Checksum(&record, RunFormat::kCheckedRecordBytes);
      if (isWhole)
        records_.push_back(record);
      else
        ++damaged_;
    }
  }
  const auto isBefore = [](const TRecord& one, const TRecord& other) { return one.number < other.number; };
  const auto isSame = [](const TRecord& one, const TRecord& other) { return one.number == other.number; };
  std::stable_sort(records_.begin(), records_.end(), isBefore); // of several records for an image the first counts
  const auto rest = std::unique(records_.begin(), records_.end(), isSame);
  damaged_ += records_.end() - rest;
  records_.erase(rest, records_.end());
  return error_.empty();
}

std::vector<TIndexRecord>::const_iterator TRunIndex::At(std::int64_t image) const
{
  return std::lower_bound(records_.begin(), records_.end(), static_cast<std::uint64_t>(image),
                          [](const TIndexRecord& record, std::uint64_t wanted) { return record.number < wanted; });
}

std::int64_t TRunIndex::NextAt(std::int64_t image) const
{
  const auto found = At(image);
  return found != records_.end() ? static_cast<std::int64_t>(found->number) : INT64_MAX;
}

const TIndexRecord* TRunIndex::Find(std::int64_t image) const
{
  const auto found = At(image);
  return found != records_.end() && found->number == static_cast<std::uint64_t>(image) ? &*found : nullptr;
}
