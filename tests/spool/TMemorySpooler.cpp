// SPDX-License-Identifier: MIT
// A spooler whose images are memory, with failures on request.
#include "tests/spool/TMemorySpooler.h"

#include <algorithm>

/// Counts the calls that run at the same time.
class TMemorySpooler::TCall
{
public:
  explicit TCall(TMemorySpooler& spooler) : spooler_(spooler)
  {
    const int calls = ++spooler_.calls_;
    int most = spooler_.mostCallsAtOnce;
    while (most < calls && !spooler_.mostCallsAtOnce.compare_exchange_weak(most, calls)) {
    }
  }
  ~TCall() { --spooler_.calls_; }
  TCall(const TCall&) = delete;
  TCall& operator=(const TCall&) = delete;

private:
  TMemorySpooler& spooler_;
};

int TMemorySpooler::OpenImage(unsigned int index, int mode, IImage*& image)
{
  const TCall call(*this);
  const std::lock_guard lock(mutex_);
  modes.push_back(mode);
  const int answer = openResult(index);
  if (answer != 0 || givesNoImage) return answer;
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
  const TCall call(*this);
  beforeClose();
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
