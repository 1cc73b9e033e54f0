// SPDX-License-Identifier: MIT
// Owns a critical section to the end of a scope.
#pragma once

#include "utility/TQuorinCriticalSection.h"

namespace QuorinUtility {

/// Enters a critical section when it is constructed and exits it when it is destroyed. Borrows the section, which must
/// outlive it; used by the one thread that made it.
class SCOPED_LOCK_CLASS TAutoQuorinCriticalSection
{
public:
  explicit TAutoQuorinCriticalSection(TQuorinCriticalSection* section) ACQUIRE(section) : section_(section)
  {
    section_->Enter();
  }
  virtual ~TAutoQuorinCriticalSection() RELEASE() { section_->Exit(); }
  TAutoQuorinCriticalSection(const TAutoQuorinCriticalSection&) = delete;
  TAutoQuorinCriticalSection& operator=(const TAutoQuorinCriticalSection&) = delete;

private:
  TQuorinCriticalSection* section_;
};

} // namespace QuorinUtility
