// SPDX-License-Identifier: MIT
// Holds a critical section for the length of a scope.
#pragma once

namespace QuorinUtility {

class TQuorinCriticalSection;

/// Enters a critical section when it is made and exits it when it goes. Borrows the section, which must outlive
/// it; used by the one thread that made it.
class TAutoQuorinCriticalSection
{
public:
  explicit TAutoQuorinCriticalSection(TQuorinCriticalSection* section);
  virtual ~TAutoQuorinCriticalSection();
  TAutoQuorinCriticalSection(const TAutoQuorinCriticalSection&) = delete;
  TAutoQuorinCriticalSection& operator=(const TAutoQuorinCriticalSection&) = delete;

private:
  TQuorinCriticalSection* section_;
};

} // namespace QuorinUtility
