// SPDX-License-Identifier: MIT
// System calls that the tests of this folder direct, and helpers to wait for what other threads do.
#include "tests/utility/SystemCalls.h"

#include <cerrno>
#include <fstream>
#include <pthread.h>
#include <string>

namespace {

thread_local system_calls::Directed* directed = nullptr;

} // namespace

extern "C" {
int __real_clock_gettime(clockid_t id, timespec* now);
int __wrap_clock_gettime(clockid_t id, timespec* now);
int __real_pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* deadline);
int __wrap_pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* deadline);
int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                          void* argument);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                          void* argument);
int __real_sysinfo(struct sysinfo* info);
int __wrap_sysinfo(struct sysinfo* info);

int __wrap_clock_gettime(clockid_t id, timespec* now)
{
  if (!directed || !directed->clock) return __real_clock_gettime(id, now);
  *now = *directed->clock;
  return 0;
}

int __wrap_pthread_cond_timedwait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* deadline)
{
  const int result = __real_pthread_cond_timedwait(condition, mutex, deadline);
  if (result == ETIMEDOUT && directed && directed->atTheEdgeOfTimeout) {
    pthread_mutex_unlock(mutex);
    directed->atTheEdgeOfTimeout();
    pthread_mutex_lock(mutex);
  }
  return result;
}

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                          void* argument)
{
  if (directed && directed->threadCreationError) return directed->threadCreationError;
  return __real_pthread_create(thread, attributes, start, argument);
}

int __wrap_sysinfo(struct sysinfo* info)
{
  if (directed && directed->memoryRefused) return -1;
  if (!directed || !directed->memory) return __real_sysinfo(info);
  *info = *directed->memory;
  return 0;
}
}

namespace system_calls {

Directed::Directed()
{
  directed = this;
}

Directed::~Directed()
{
  directed = nullptr;
}

bool EventuallyAsleep(pid_t thread)
{
  return Eventually([thread] {
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string text;
    std::getline(file, text);
    const std::size_t state = text.rfind(") ");
    return state != std::string::npos && text[state + 2] == 'S';
  });
}

} // namespace system_calls
