// SPDX-License-Identifier: MIT
// A spooler whose images are memory, with failures on request.
#include "tests/spool/TMemorySpooler.h"

#include <algorithm>

int TMemorySpooler::OpenImage(unsigned int index, int mode, IImage*& image)
{
  if (calls_++ > 0) ++overlaps;
  const std::lock_guard lock(mutex_);
  --calls_;
  modes.push_back(mode);
  const int answer = openResult(index);
  if (answer != 0) return answer;
  TMemoryImage& opened = images[index];
  if (opened.bytes.empty()) opened.bytes.resize(sizeBytes);
  opened.isOpen = true;
  ++opened.opened;
  image = &opened;
  return 0;
}

int TMemorySpooler::SetImageSizeBytes(std::uint64_t size)
{
  sizeBytes = size;
  return result;
}

int TMemorySpooler::CloseImage(IImage* image)
{
  if (calls_++ > 0) ++overlaps;
  beforeClose();
  --calls_;
  const std::lock_guard lock(mutex_);
  auto& closing = static_cast<TMemoryImage&>(*image);
  closing.isOpen = false;
  ++closing.closed;
  closing.closedBy = std::this_thread::get_id();
  return result;
}

int TMemorySpooler::OpenImages()
{
  const std::lock_guard lock(mutex_);
  return static_cast<int>(
      std::count_if(images.begin(), images.end(), [](const auto& image) { return image.second.isOpen; }));
}

int TMemorySpooler::Note(const wchar_t* what, const wchar_t* value)
{
  notes += std::wstring(what) + value + L";";
  return result;
}
