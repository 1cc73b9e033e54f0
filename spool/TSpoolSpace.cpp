// SPDX-License-Identifier: MIT
// How much of a disk a run needs, and how much there is.
#include "spool/TSpoolSpace.h"

#include "runs/run_format.h"
#include "spool/image_files.h"
#include "spool/TSpoolDescription.h"
#include "spool/TSpoolLayout.h"
#include "utility/TQuorinFilePath.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>
#include <vector>

using QuorinUtility::TQuorinFilePath;

namespace {

constexpr std::uint64_t kStatusBlockBytes = 512; // of st_blocks, on every file system
constexpr std::uint64_t kRecordBytes = sizeof(RunFormat::TIndexRecord);

/// Of the directory, or of the nearest one above it that exists. False when that is not known.
bool ReadVolume(const std::string& directory, struct statvfs& volume)
{
  auto path = std::make_unique<TQuorinFilePath>(directory.c_str());
  while (statvfs(path->GetForwardSlashPath(), &volume) != 0) {
    if (errno != ENOENT) return false;
    path = path->GetParent();
    if (!path) return false;
  }
  return volume.f_blocks > 0 && volume.f_frsize > 0;
}

/// What removing the file makes free: nothing when it has another name.
std::uint64_t RemovableBytes(const std::string& path)
{
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_nlink > 1) return 0;
  return static_cast<std::uint64_t>(status.st_blocks) * kStatusBlockBytes;
}

std::uint64_t EarlierRunBytes(const std::string& directory)
{
  std::vector<std::string> files;
  FindImageFiles(directory, RunFormat::kImageFileStem, files);
  files.push_back(directory + "/" + RunFormat::kDescriptionName);
  files.push_back(directory + "/" + RunFormat::kIndexName);
  std::uint64_t bytes = 0;
  for (const std::string& file : files) bytes += RemovableBytes(file);
  return bytes;
}

} // namespace

std::optional<TSpoolSpace> TSpoolSpace::Measure(const std::string& directory, const TSpoolLayout& layout,
                                                std::uint32_t images)
{
  struct statvfs volume = {};
  if (!ReadVolume(directory, volume)) return std::nullopt;
  const std::uint64_t block = volume.f_frsize;
  const auto inBlocks = [block](std::uint64_t bytes) { return (bytes + block - 1) / block * block; };
  const std::uint64_t perFile = layout.ImagesPerFile();
  const std::uint64_t imageBytes = layout.imageSizeBytes;
  // There are two for a moment: at the end, a new one takes the place of that of the start.
  const std::uint64_t descriptionBytes = inBlocks(TSpoolDescription::kMaxBytes) + block;

  const std::uint64_t earlierBytes = EarlierRunBytes(directory);

  TSpoolSpace space;
  space.freeBytes = volume.f_bavail * block + earlierBytes;
  space.neededBytes = images / perFile * inBlocks(perFile * imageBytes) + inBlocks(images % perFile * imageBytes) +
                      inBlocks(images * kRecordBytes) + descriptionBytes;
  // Root may also use what is kept from others, and then needs the records for it.
  const std::uint64_t usableBlocks = geteuid() == 0 ? std::max(volume.f_bfree, volume.f_bavail) : volume.f_bavail;
  const std::uint64_t usable = usableBlocks * block + earlierBytes;
  const std::uint64_t perImage = inBlocks(perFile * imageBytes) / perFile + kRecordBytes;
  const std::uint64_t fitting = (usable - std::min(usable, descriptionBytes)) / perImage;
  space.indexBytes = std::min<std::uint64_t>(images, fitting + 1) * kRecordBytes;
  return space;
}
