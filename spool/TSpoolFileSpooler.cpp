// SPDX-License-Identifier: MIT
// Makes, hands out and closes the files of a spooled run.
#include "spool/TSpoolFileSpooler.h"

#include "spool/TFileDescriptor.h"
#include "spool/TSpoolFault.h"
#include "spool/TSpoolFile.h"
#include "spool/TSpoolFileCloser.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

constexpr std::size_t kNumberDigits = 10;
constexpr const char* kExtension = ".dat";

void AppendUtf8(std::string& text, std::uint32_t c)
{
  if (c < 0x80) {
    text += static_cast<char>(c);
    return;
  }
  const int following = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
  constexpr std::array<std::uint32_t, 4> kFirst = {0, 0xC0, 0xE0, 0xF0};
  text += static_cast<char>(kFirst[static_cast<std::size_t>(following)] | c >> 6 * following);
  for (int i = following - 1; i >= 0; --i) text += static_cast<char>(0x80 | (c >> 6 * i & 0x3F));
}

// The narrow form of a wide text, in UTF-8 whatever the language of the program.
std::string ToUtf8(const wchar_t* text)
{
  std::string utf8;
  for (; text && *text; ++text) AppendUtf8(utf8, static_cast<std::uint32_t>(*text));
  return utf8;
}

struct TCloseDirectory
{
  void operator()(DIR* directory) const { closedir(directory); }
};

} // namespace

TSpoolFileSpooler::TSpoolFileSpooler(TSpoolFault* fault)
    : fault_(fault), closer_(std::make_unique<TSpoolFileCloser>(fault))
{
}

TSpoolFileSpooler::~TSpoolFileSpooler() = default;

int TSpoolFileSpooler::SetImageSizeBytes(std::uint64_t sizeBytes)
{
  fileBytes_ = sizeBytes;
  return 0;
}

int TSpoolFileSpooler::SetPath(const wchar_t* path)
{
  directory_ = ToUtf8(path);
  return 0;
}

int TSpoolFileSpooler::SetStem(const wchar_t* stem)
{
  stem_ = ToUtf8(stem);
  return 0;
}

int TSpoolFileSpooler::OpenImage(unsigned int index, int /*mode*/, IImage*& image)
{
  const std::lock_guard lock(mutex_);
  const auto open = files_.find(index);
  if (open != files_.end()) {
    image = open->second.get();
    return 0;
  }
  auto file = std::make_unique<TSpoolFile>(PathOf(index), index, fileBytes_, &progress_);
  if (const int error = file->Create(volume_)) {
    fault_->Raise("cannot create", file->Path(), error);
    return error;
  }
  ++progress_;
  image = file.get();
  files_.emplace(index, std::move(file));
  made_ = std::max(made_, index + 1);
  return 0;
}

int TSpoolFileSpooler::CloseImage(IImage* image)
{
  std::unique_ptr<TSpoolFile> file;
  {
    const std::lock_guard lock(mutex_);
    const auto open = std::find_if(files_.begin(), files_.end(),
                                   [image](const auto& entry) { return entry.second.get() == image; });
    if (open == files_.end()) return EINVAL;
    if (!open->second->IsFull()) return 0;
    file = std::move(open->second);
    files_.erase(open);
  }
  closer_->Close(std::move(file));
  return 0;
}

void TSpoolFileSpooler::Finish()
{
  const std::lock_guard lock(mutex_);
  for (auto& [number, file] : files_) closer_->Close(std::move(file));
  files_.clear();
  closer_.reset();
}

void TSpoolFileSpooler::LeavePageCache()
{
  const std::lock_guard lock(mutex_);
  for (unsigned int number = 0; number < made_; ++number) {
    const TFileDescriptor file(open(PathOf(number).c_str(), O_RDONLY | O_CLOEXEC));
    if (file.IsOpen()) posix_fadvise(file.Get(), 0, 0, POSIX_FADV_DONTNEED);
  }
}

// Not with std::filesystem, whose iterator ends the program when it finds no memory.
int TSpoolFileSpooler::Remove()
{
  std::vector<std::string> own;
  const std::unique_ptr<DIR, TCloseDirectory> directory(opendir(directory_.c_str()));
  errno = directory ? 0 : errno;
  while (const dirent* const entry = directory ? readdir(directory.get()) : nullptr) {
    if (IsOwnFile(entry->d_name)) own.push_back(directory_ + "/" + entry->d_name);
    errno = 0;
  }
  if (errno != 0) fault_->Raise("cannot read", directory_, errno);
  for (const std::string& path : own)
    if (unlink(path.c_str()) != 0 && errno != ENOENT) fault_->Raise("cannot remove", path, errno);
  return fault_->IsRaised() ? EIO : 0;
}

std::string TSpoolFileSpooler::PathOf(unsigned int number) const
{
  std::array<char, kNumberDigits + 1> digits{};
  std::snprintf(digits.data(), digits.size(), "%0*u", static_cast<int>(kNumberDigits), number);
  return directory_ + "/" + stem_ + "_" + digits.data() + kExtension;
}

bool TSpoolFileSpooler::IsOwnFile(const std::string& name) const
{
  const std::string front = stem_ + "_";
  if (name.size() != front.size() + kNumberDigits + std::char_traits<char>::length(kExtension)) return false;
  return name.starts_with(front) && name.ends_with(kExtension) &&
         std::all_of(name.begin() + static_cast<std::ptrdiff_t>(front.size()),
                     name.begin() + static_cast<std::ptrdiff_t>(front.size() + kNumberDigits),
                     [](char c) { return c >= '0' && c <= '9'; });
}
