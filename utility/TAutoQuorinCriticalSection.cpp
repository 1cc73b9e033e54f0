// SPDX-License-Identifier: MIT
// Holds a critical section for the length of a scope.
#include "utility/TAutoQuorinCriticalSection.h"

#include "utility/TQuorinCriticalSection.h"

namespace QuorinUtility {

TAutoQuorinCriticalSection::TAutoQuorinCriticalSection(TQuorinCriticalSection* section) : section_(section)
{
  section_->Enter();
}

TAutoQuorinCriticalSection::~TAutoQuorinCriticalSection()
{
  section_->Exit();
}

} // namespace QuorinUtility
