// SPDX-License-Identifier: MIT
// Writing the archive.
#include "tools/TBundle.h"

#include "tools/Json.h"
#include "tools/TTraceRedactor.h"

#include <archive.h>
#include <archive_entry.h>
#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <memory>
#include <nettle/sha2.h>
#include <system_error>
#include <unistd.h>

namespace vxtool {

namespace {

constexpr int kOwnerOnly = 0600;

std::string Sha256Of(const std::string& text)
{
  sha256_ctx context;
  sha256_init(&context);
  sha256_update(&context, text.size(), reinterpret_cast<const std::uint8_t*>(text.data()));
  std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
  sha256_digest(&context, digest.size(), digest.data());
  std::string hexadecimal;
  for (const std::uint8_t byte : digest) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", byte);
    hexadecimal += digits;
  }
  return hexadecimal;
}

} // namespace

TBundle::~TBundle()
{
  if (archive_) archive_write_free(archive_);
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

bool TBundle::Fail(const std::string& reason)
{
  if (error_.empty()) error_ = path_ + ": " + reason;
  return false;
}

bool TBundle::FailToWrite()
{
  const int error = archive_errno(archive_);
  return Fail("cannot be written: " +
              (error > 0 ? std::generic_category().message(error) : archive_error_string(archive_)));
}

bool TBundle::Create(const std::string& path)
{
  path_ = path;
  if (access(path.c_str(), F_OK) == 0) return Fail("exists already");
  const std::string temporary = path + ".part";
  const int file = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kOwnerOnly);
  if (file < 0)
    return Fail(errno == EEXIST
                    ? "cannot be created: remove " + temporary + ", which is of a program that was killed"
                    : "cannot be created: " + std::generic_category().message(errno));
  close(file);
  temporary_ = temporary;
  archive_ = archive_write_new();
  if (!archive_) return Fail("no memory");
  archive_write_set_format_pax_restricted(archive_);
  archive_write_add_filter_gzip(archive_);
  if (archive_write_open_filename(archive_, temporary.c_str()) != ARCHIVE_OK) return FailToWrite();
  return true;
}

bool TBundle::Write(const std::string& name, const std::string& text)
{
  if (!archive_ || !error_.empty()) return false;
  const std::unique_ptr<archive_entry, decltype(&archive_entry_free)> entry(archive_entry_new(),
                                                                            archive_entry_free);
  archive_entry_set_pathname(entry.get(), name.c_str());
  archive_entry_set_size(entry.get(), static_cast<la_int64_t>(text.size()));
  archive_entry_set_filetype(entry.get(), AE_IFREG);
  archive_entry_set_perm(entry.get(), kOwnerOnly);
  archive_entry_set_mtime(entry.get(), std::time(nullptr), 0);
  if (archive_write_header(archive_, entry.get()) != ARCHIVE_OK ||
      archive_write_data(archive_, text.data(), text.size()) != static_cast<la_ssize_t>(text.size()))
    return FailToWrite();
  return true;
}

void TBundle::Add(const std::string& name, std::string text)
{
  if (!text.empty()) entries_.push_back({name, std::move(text), nullptr});
}

std::string TBundle::AddTrace(const std::string& name, const std::string& path)
{
  auto trace = std::make_unique<TTraceFile>();
  const std::string reason = trace->Read(path);
  if (reason.empty()) entries_.push_back({name, "", std::move(trace)});
  return reason.empty() ? "" : path + ": " + reason;
}

// What one file says of users and serial numbers is replaced in all of them.
void TBundle::Redact()
{
  std::vector<std::unique_ptr<TTraceRedactor>> traces;
  for (const TEntry& entry : entries_) {
    redaction_.Learn(entry.text);
    traces.push_back(entry.trace ? std::make_unique<TTraceRedactor>(*entry.trace, redaction_) : nullptr);
  }
  for (std::size_t number = 0; number < entries_.size(); ++number) {
    TEntry& entry = entries_[number];
    if (traces[number]) {
      const std::vector<std::byte> bytes = traces[number]->Redacted();
      entry.text.assign(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    } else {
      entry.text = redaction_.Text(entry.text);
    }
  }
}

bool TBundle::Close()
{
  if (!archive_ || !error_.empty()) return false;
  for (TEntry& entry : entries_)
    if (keepsNames_ && entry.trace)
      entry.text.assign(reinterpret_cast<const char*>(entry.trace->Bytes().data()), entry.trace->UsedBytes());
  if (!keepsNames_) Redact();
  Json files = Json::array();
  for (const TEntry& entry : entries_) {
    if (!Write(entry.name, entry.text)) return false;
    files.push_back({{"name", entry.name}, {"bytes", entry.text.size()}, {"sha256", Sha256Of(entry.text)}});
  }
  if (!Write("manifest.json", JsonLine({{"files", files}}))) return false;
  if (archive_write_close(archive_) != ARCHIVE_OK) return FailToWrite();
  if (link(temporary_.c_str(), path_.c_str()) != 0)
    return Fail("cannot be created: " + std::generic_category().message(errno));
  return true;
}

void TBundle::SayContents() const
{
  std::string names;
  bool hasTrace = false; // which is no text
  for (const TEntry& entry : entries_) {
    names += entry.name + ", ";
    hasTrace |= entry.name.ends_with(".vxtr");
  }
  Say(path_ + " has " + names + "manifest.json" +
      (keepsNames_ ? "" : "; names, paths and serial numbers are left out"));
  Say("look through it before you send it: tar -xzOf " + path_ + (hasTrace ? " --exclude '*.vxtr'" : "") +
      " | less");
  if (hasTrace) Say("tar -xzf " + path_ + " --one-top-level unpacks it for vxmcd trace print");
}

} // namespace vxtool
