// SPDX-License-Identifier: MIT
// The first thing that went wrong while a run was written to disk.
#include "spool/TSpoolFault.h"

#include "utility/TQuorinLibDebugOutput.h"

#include <exception>
#include <system_error>
#include <utility>

using QuorinUtility::TQuorinLibDebugOutput;

void TSpoolFault::Raise(const char* what, const std::string& name, int error) noexcept
{
  const std::lock_guard lock(mutex_); // who sees the failure waits for its text
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

std::string TSpoolFault::Text() const
{
  const std::lock_guard lock(mutex_);
  return IsRaised() && text_.empty() ? "out of memory" : text_;
}
