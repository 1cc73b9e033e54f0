// SPDX-License-Identifier: MIT
// The names in a directory.
#include "utility/TQuorinDirectoryList.h"

#include "utility/file_access.h"

#include <array>
#include <cstring>
#include <limits>
#include <unistd.h>
#include <utility>

namespace QuorinUtility {

namespace {

// Thread-safe as long as no two threads read from the same stream.
const dirent* ReadEntry(DIR* stream)
{
  return ::readdir(stream); // NOLINT(concurrency-mt-unsafe)
}

constexpr std::size_t kMaxPath = 4096;

std::unique_ptr<char[]> Copy(const char* text)
{
  const std::size_t size = std::strlen(text) + 1;
  auto copy = std::make_unique<char[]>(size);
  std::memcpy(copy.get(), text, size);
  return copy;
}

} // namespace

TQuorinDirectoryList::TQuorinDirectoryList(TQuorinFilePath directory, const char* filter, eStringLocation location)
    : directory_(std::move(directory)), filter_(filter ? Copy(filter) : nullptr), location_(location)
{
  Reenumerate();
}

TQuorinDirectoryList::~TQuorinDirectoryList() = default;

// Twice through the directory, which others may change meanwhile: the second pass ends at the names counted in the
// first.
void TQuorinDirectoryList::Reenumerate()
{
  TQuorinFilePath directory = directory_;
  directory.DelimitEnd();
  items_.reset();
  itemCount_ = 0;

  TOpenDirectory stream(::opendir(directory.GetForwardSlashPath()));
  if (!stream) return;
  std::int32_t count = 0;
  while (const dirent* const entry = ReadEntry(stream.get()))
    if (IsListed(entry->d_name) && count < std::numeric_limits<std::int32_t>::max()) ++count;
  stream.reset();
  if (count == 0) return;

  items_ = std::make_unique<TText[]>(static_cast<std::size_t>(count));
  itemCount_ = count;
  stream.reset(::opendir(directory.GetForwardSlashPath()));
  if (!stream) return;
  std::int32_t stored = 0;
  while (const dirent* const entry = stored < count ? ReadEntry(stream.get()) : nullptr)
    if (IsListed(entry->d_name)) items_[static_cast<std::size_t>(stored++)] = Copy(entry->d_name);
  itemCount_ = stored;
}

const char* TQuorinDirectoryList::GetItem(int index) const
{
  return index >= 0 && index < itemCount_ ? items_[static_cast<std::size_t>(index)].get() : nullptr;
}

TQuorinFilePath TQuorinDirectoryList::GetCurrentDir()
{
  std::array<char, kMaxPath> buffer{};
  TQuorinFilePath directory(::getcwd(buffer.data(), buffer.size()));
  directory.DelimitEnd();
  return directory;
}

bool TQuorinDirectoryList::IsListed(const char* name) const
{
  return !filter_ || std::strstr(name, filter_.get());
}

} // namespace QuorinUtility
