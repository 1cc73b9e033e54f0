// SPDX-License-Identifier: MIT
// Reads the index record by record and keeps those that are whole.
#include "runs/TRunIndex.h"

#include "runs/checksum.h"
#include "runs/TInputFile.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <span>
#include <utility>

namespace {

using RunFormat::TIndexRecord;

constexpr std::size_t kRecordBytes = sizeof(TIndexRecord);
constexpr std::size_t kReadRecords = 2048;
// Records that a file may have beyond those of all images, damaged or repeated; what follows them is not read.
constexpr std::size_t kSpareRecords = 32768;

bool IsWhole(const TIndexRecord& record, std::int64_t imageLimit)
{
  return record.number < static_cast<std::uint64_t>(imageLimit) &&
         record.recordChecksum == Checksum(&record, RunFormat::kCheckedRecordBytes);
}

std::int64_t PiecesIn(std::uint64_t bytes)
{
  return static_cast<std::int64_t>((bytes + kRecordBytes - 1) / kRecordBytes);
}

} // namespace

bool TRunIndex::Read(const std::string& directory, std::int64_t imageLimit,
                     const std::function<bool()>& isInterrupted)
{
  *this = TRunIndex();
  std::vector<TRecord> records;
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
      if (size == kRecordBytes && IsWhole(record, imageLimit))
        records.push_back(record);
      else
        ++damaged_;
    }
  }
  Add(std::move(records));
  return error_.empty();
}

void TRunIndex::ReadAdded(const std::string& directory, std::int64_t imageLimit)
{
  TInputFile file;
  if (!file.Open(directory + "/" + RunFormat::kIndexName) || file.Length() < addedEnd_) return;
  std::vector<TRecord> records((file.Length() - addedEnd_) / kRecordBytes);
  if (!file.ReadAt(addedEnd_, std::as_writable_bytes(std::span(records)))) return;
  // The last one may be half written.
  const auto end = std::find_if_not(records.begin(), records.end(),
                                    [imageLimit](const TRecord& record) { return IsWhole(record, imageLimit); });
  records.erase(end, records.end());
  addedEnd_ += records.size() * kRecordBytes;
  Add(std::move(records));
}

void TRunIndex::Add(std::vector<TRecord> records)
{
  const auto isBefore = [](const TRecord& one, const TRecord& other) { return one.number < other.number; };
  const auto isSame = [](const TRecord& one, const TRecord& other) { return one.number == other.number; };
  std::stable_sort(records.begin(), records.end(), isBefore);
  const auto middle = records_.insert(records_.end(), records.begin(), records.end());
  const bool isBehind =
      middle == records_.begin() || middle == records_.end() || isBefore(*std::prev(middle), *middle);
  if (!isBehind) std::inplace_merge(records_.begin(), middle, records_.end(), isBefore);
  const auto rest = std::unique(isBehind ? middle : records_.begin(), records_.end(), isSame);
  damaged_ += records_.end() - rest;
  records_.erase(rest, records_.end());
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
