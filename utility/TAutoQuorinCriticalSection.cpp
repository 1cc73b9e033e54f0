// SPDX-License-Identifier: MIT
// Owns a critical section to the end of a scope.
#include "utility/TAutoQuorinCriticalSection.h"

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
