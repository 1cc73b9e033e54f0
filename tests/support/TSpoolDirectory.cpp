// SPDX-License-Identifier: MIT
// Reads what a recorded run has left: single keys as they stand in the file, images with the reader of runs/.
#include "tests/support/TSpoolDirectory.h"

#include "runs/checksum.h"
#include "runs/TRunImages.h"
#include "runs/TRunIndex.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>

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
  TRunImages images(path_, std::max(Number("multiimage", "ImagesPerFile"), 1L), Number("data", "ImageSize"));
  TRunIndex index;
  index.Read(path_, INT_MAX);
  std::vector<std::byte> frame;
  for (std::int64_t image = index.NextAt(0); image != INT64_MAX; image = index.NextAt(image + 1)) {
    const bool isWhole =
        images.ReadImage(image, frame) && Checksum(frame.data(), frame.size()) == index.Find(image)->checksum;
    const auto* const bytes = reinterpret_cast<const unsigned char*>(frame.data());
    visit(static_cast<std::uint64_t>(image),
          isWhole ? std::vector(bytes, bytes + frame.size()) : std::vector<unsigned char>());
  }
  return static_cast<std::uint64_t>(index.Count());
}

std::vector<std::string> TSpoolDirectory::Files() const
{
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(path_))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}
