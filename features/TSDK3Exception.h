// SPDX-License-Identifier: MIT
// The library's one exception type.
#pragma once

#include "vxmcd.h"

#include <exception>
#include <string>

/// Thrown by the metadata parser and the spool file classes for failures without a status. Its type
/// information is exported, so that an application can catch it; its functions are not.
class VXMCD_API TSDK3Exception : public std::exception
{
public:
  [[gnu::visibility("hidden")]] explicit TSDK3Exception(std::string message);
  /// Formats like printf; at most 511 characters are kept.
  [[gnu::visibility("hidden")]] explicit TSDK3Exception(const char* format, ...)
      __attribute__((format(printf, 2, 3)));
  [[gnu::visibility("hidden")]] ~TSDK3Exception() override;

  [[gnu::visibility("hidden")]] const char* what() const noexcept override;

private:
  std::string message_;
};
