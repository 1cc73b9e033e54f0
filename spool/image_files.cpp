// SPDX-License-Identifier: MIT
// Which files of a directory have the images of a run.
#include "spool/image_files.h"

#include "runs/run_format.h"
#include "utility/file_access.h"

#include <cerrno>

// Not with std::filesystem, whose iterator ends the program when it finds no memory.
int FindImageFiles(const std::string& directory, const std::string& stem, std::vector<std::string>& paths)
{
  const TOpenDirectory open(opendir(directory.c_str()));
  if (!open) return errno;
  errno = 0;
  // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread reads this stream
  while (const dirent* const entry = readdir(open.get())) {
    if (RunFormat::ImageFileNumber(entry->d_name, stem)) paths.push_back(directory + "/" + entry->d_name);
    errno = 0;
  }
  return errno;
}
