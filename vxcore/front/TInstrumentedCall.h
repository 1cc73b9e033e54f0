// SPDX-License-Identifier: MIT
// What surrounds every exported call: the fault plan and the call log.
#pragma once

#include "vxcore/front/TCallLog.h"
#include "vxcore/front/TFaultPlan.h"

#include <functional>

namespace vxcore {

/// What the fault plan and the call log need to know of a call. Filled on every call, so it only points.
struct TCallInfo
{
  const char* function;
  int handle = -1;
  const wchar_t* feature = nullptr;
  int device = -1; ///< when it is not the handle's

  // The value among the arguments, if there is one.
  enum
  {
    None,
    Integer,
    Real,
    Text
  } valueKind = None;
  long long integer = 0;
  double real = 0.0;
  const wchar_t* text = nullptr;

  // Outputs that a rule may replace.
  int* outInt = nullptr;
  long long* outLong = nullptr;
  double* outDouble = nullptr;
  wchar_t* outText = nullptr;
  int outLength = 0;
  unsigned char** outBuffer = nullptr;
  bool isRead = false; ///< reads a feature's value

  TCallInfo(const char* f, int h, const wchar_t* n = nullptr) : function(f), handle(h), feature(n) {}
  TCallInfo& With(long long value)
  {
    valueKind = Integer;
    integer = value;
    return *this;
  }
  TCallInfo& With(double value)
  {
    valueKind = Real;
    real = value;
    return *this;
  }
  TCallInfo& With(const wchar_t* value)
  {
    valueKind = Text;
    text = value;
    return *this;
  }
};

/// The same call with the fault plan asked and the log written.
int RunInstrumented(const TCallInfo& info, const std::function<int()>& body);

/// Runs an exported function's body. With neither faults nor log this costs two relaxed loads.
template <typename Body>
int RunCall(const TCallInfo& info, Body&& body)
{
  if (TFaultPlan::IsEmpty() && !TCallLog::IsOn()) [[likely]] {
    return body();
  }
  return RunInstrumented(info, std::function<int()>(std::ref(body)));
}

} // namespace vxcore
