// SPDX-License-Identifier: MIT
// Small system helpers: sleeping, identifiers, bounded strings.
#include "utility/TQuorinMisc.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <cwchar>
#include <unistd.h>

namespace QuorinUtility {

namespace {

constexpr int kMillisecondsPerSecond = 1000;
constexpr long kNanosecondsPerMillisecond = 1000000;
constexpr long kNanosecondsPerSecond = 1000000000;

} // namespace

void TQuorinMisc::Sleep(int milliseconds)
{
  if (milliseconds <= 0) return;
  timespec end{};
  clock_gettime(CLOCK_MONOTONIC, &end);
  end.tv_sec += milliseconds / kMillisecondsPerSecond;
  end.tv_nsec += (milliseconds % kMillisecondsPerSecond) * kNanosecondsPerMillisecond;
  if (end.tv_nsec >= kNanosecondsPerSecond) {
    end.tv_nsec -= kNanosecondsPerSecond;
    ++end.tv_sec;
  }
  while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR) {
  }
}

unsigned int TQuorinMisc::GetThreadID()
{
  return static_cast<unsigned int>(::gettid());
}

unsigned int TQuorinMisc::GetProcessID()
{
  return static_cast<unsigned int>(::getpid());
}

char* TQuorinMisc::strncpy(char* destination, const char* source, std::size_t size)
{
  if (!destination || size == 0) return destination;
  const std::size_t length = source ? ::strnlen(source, size - 1) : 0;
  if (length > 0) std::memcpy(destination, source, length);
  destination[length] = '\0';
  return destination;
}

int TQuorinMisc::snprintf(char* buffer, std::size_t size, const char* format, ...)
{
  if (!buffer || size == 0) return -1;
  buffer[0] = '\0';
  if (!format) return -1;
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(buffer, size, format, arguments);
  va_end(arguments);
  if (length < 0) buffer[0] = '\0';
  return length;
}

int TQuorinMisc::snwprintf(wchar_t* buffer, std::size_t size, const wchar_t* format, ...)
{
  if (!buffer || size == 0) return -1;
  // Filled first: what a failed call leaves in the buffer, and whether it terminates it, differs between C
  // libraries.
  std::wmemset(buffer, L'\0', size);
  if (!format) return -1;
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vswprintf(buffer, size, format, arguments);
  va_end(arguments);
  buffer[size - 1] = L'\0';
  return length;
}

} // namespace QuorinUtility
