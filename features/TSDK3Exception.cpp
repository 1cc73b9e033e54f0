// SPDX-License-Identifier: MIT
// The library's one exception type.
#include "features/TSDK3Exception.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

TSDK3Exception::TSDK3Exception(std::string message) : message_(std::move(message)) {}

TSDK3Exception::TSDK3Exception(const char* format, ...)
{
  char text[512] = {};
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  message_ = text;
}

TSDK3Exception::~TSDK3Exception() = default;

const char* TSDK3Exception::what() const noexcept
{
  return message_.c_str();
}
