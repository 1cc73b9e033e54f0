// SPDX-License-Identifier: MIT
// The first failure of a run that is written to disk.
#include "spool/TSpoolFault.h"

#include "utility/TQuorinLibDebugOutput.h"

#include <cerrno>
#include <exception>
#include <sys/stat.h>
#include <system_error>
#include <utility>

using QuorinUtility::TQuorinLibDebugOutput;

void TSpoolFault::Raise(const char* what, const std::string& name, int error) noexcept
{
  const TLock lock(mutex_); // a thread that sees the failure waits for its text
  const bool isFirst = !raised_.exchange(true, std::memory_order_acq_rel);
  try {
    std::string text = std::string(what) + " " + name;
    if (error != 0) text += ": " + std::generic_category().message(error);
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "%s", text.c_str());
    if (isFirst) text_ = std::move(text);
  } catch (const std::exception&) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "%s %s: error %d", what, name.c_str(), error);
  }
}

bool TSpoolFault::CheckFile(int descriptor, std::uint64_t size, const std::string& name) noexcept
{
  struct stat status = {};
  if (fstat(descriptor, &status) != 0) {
    Raise("cannot look at", name, errno);
    return false;
  }
  if (status.st_nlink > 0 && static_cast<std::uint64_t>(status.st_size) == size) return true;
  Raise("somebody has removed or truncated", name, 0);
  return false;
}

std::string TSpoolFault::Text() const
{
  const TLock lock(mutex_);
  return IsRaised() && text_.empty() ? "out of memory" : text_;
}
