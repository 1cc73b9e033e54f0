// SPDX-License-Identifier: MIT
// Reads what a spooled run has left, by the description of the format alone.
#include "tests/support/TSpoolDirectory.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

constexpr std::size_t kRecordBytes = 32;
constexpr std::size_t kCheckedBytes = 24;

struct TRecord
{
  std::uint64_t number;
  std::uint64_t imageChecksum;
  std::int64_t timeNs;
  std::uint64_t checksum;
};
static_assert(sizeof(TRecord) == kRecordBytes);

/// The files of a run, of which the last one used stays open.
class TImageFiles
{
public:
  TImageFiles(std::string path, std::uint64_t imagesPerFile, std::size_t imageBytes)
      : path_(std::move(path)), imagesPerFile_(imagesPerFile), image_(imageBytes)
  {
  }

  std::vector<unsigned char> Read(std::uint64_t number)
  {
    Open(number / imagesPerFile_);
    file_.seekg(static_cast<std::streamoff>(number % imagesPerFile_ * image_.size()));
    const bool read =
        bool(file_.read(reinterpret_cast<char*>(image_.data()), static_cast<std::streamsize>(image_.size())));
    return read ? image_ : std::vector<unsigned char>();
  }

private:
  void Open(std::uint64_t number)
  {
    if (file_.is_open() && file_.good() && number == open_) return;
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), "/spool_%010llu.dat", static_cast<unsigned long long>(number));
    file_ = std::ifstream(path_ + name.data(), std::ios::binary);
    open_ = number;
  }

  std::string path_;
  std::uint64_t imagesPerFile_;
  std::vector<unsigned char> image_;
  std::ifstream file_;
  std::uint64_t open_ = 0;
};

} // namespace

bool TSpoolDirectory::IsDescribed() const
{
  return Number("run", "Format") == 1 && Number("data", "ImageSize") > 0 &&
         Number("multiimage", "ImagesPerFile") > 0;
}

std::string TSpoolDirectory::Text(const char* section, const char* key) const
{
  std::ifstream file(path_ + "/acquisitionmetadata.ini");
  std::string line;
  bool inSection = false;
  while (std::getline(file, line)) {
    if (line.find('[') != std::string::npos)
      inSection = line.find("[" + std::string(section) + "]") != std::string::npos;
    const std::string front = std::string(key) + " = ";
    if (inSection && line.starts_with(front)) return line.substr(front.size());
  }
  return {};
}

long TSpoolDirectory::Number(const char* section, const char* key) const
{
  return std::strtol(Text(section, key).c_str(), nullptr, 10);
}

std::uint64_t TSpoolDirectory::VisitImages(
    const std::function<void(std::uint64_t number, const std::vector<unsigned char>& bytes)>& visit) const
{
  TImageFiles files(path_, static_cast<std::uint64_t>(Number("multiimage", "ImagesPerFile")),
                    static_cast<std::size_t>(Number("data", "ImageSize")));
  std::ifstream index(path_ + "/spool_index.dat", std::ios::binary);
  TRecord record{};
  std::uint64_t count = 0;
  while (index.read(reinterpret_cast<char*>(&record), sizeof record)) {
    if (XXH3_64bits(&record, kCheckedBytes) != record.checksum) continue;
    std::vector<unsigned char> image = files.Read(record.number);
    if (XXH3_64bits(image.data(), image.size()) != record.imageChecksum) image.clear();
    visit(record.number, image);
    ++count;
  }
  return count;
}

std::vector<std::string> TSpoolDirectory::Files() const
{
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(path_))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}
