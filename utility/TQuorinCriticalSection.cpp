// SPDX-License-Identifier: MIT
// A lock that the thread owning it may acquire again.
#include "utility/TQuorinCriticalSection.h"

namespace QuorinUtility {

TQuorinCriticalSection::TQuorinCriticalSection()
{
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(&mutex_, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

TQuorinCriticalSection::~TQuorinCriticalSection()
{
  pthread_mutex_destroy(&mutex_);
}

int TQuorinCriticalSection::Enter()
{
  return pthread_mutex_lock(&mutex_);
}

int TQuorinCriticalSection::Exit()
{
  return pthread_mutex_unlock(&mutex_);
}

} // namespace QuorinUtility
