// SPDX-License-Identifier: MIT
// The first thing that went wrong while a run was written to disk.
#include "spool/TSpoolFault.h"

#include "utility/TQuorinLibDebugOutput.h"

#include <system_error>

using QuorinUtility::TQuorinLibDebugOutput;

void TSpoolFault::Raise(const char* what, const std::string& name, int error)
{
  const std::string text = std::string(what) + " " + name + ": " + std::generic_category().message(error);
  TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "%s", text.c_str());
  const std::lock_guard lock(mutex_);
  if (raised_) return;
  text_ = text;
  raised_.store(true, std::memory_order_release);
}

std::string TSpoolFault::Text() const
{
  const std::lock_guard lock(mutex_);
  return text_;
}
