// SPDX-License-Identifier: MIT
// What surrounds every exported call: the fault plan and the call log.
#include "vxcore/front/TInstrumentedCall.h"

#include "utility/utf8.h"
#include "vxcore/backend/configuration_text.h"
#include "vxcore/front/TDeviceTable.h"

#include <charconv>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace vxcore {

namespace {

int DeviceOf(const TCallInfo& info)
{
  return info.device >= 0 ? info.device : TDeviceTable::DeviceOfHandle(info.handle);
}

std::wstring_view FeatureOf(const TCallInfo& info)
{
  return info.feature ? info.feature : L"";
}

std::string RealText(double value)
{
  char text[64];
  const auto result = std::to_chars(text, text + sizeof text, value);
  return {text, result.ptr};
}

std::string Line(const TCallInfo& info, int code)
{
  std::string line = info.function;
  if (info.feature) line += " " + ToUtf8(info.feature);
  if (info.valueKind == TCallInfo::Integer)
    line += " " + std::to_string(info.integer);
  else if (info.valueKind == TCallInfo::Real)
    line += " " + RealText(info.real);
  else if (info.valueKind == TCallInfo::Text)
    line += " " + (info.text ? ToUtf8(info.text) : std::string("null"));
  return line + " -> " + std::to_string(code);
}

void WriteNumber(const TCallInfo& info, long long integer, double real)
{
  if (info.outInt) *info.outInt = static_cast<int>(integer);
  if (info.outLong) *info.outLong = integer;
  if (info.outDouble) *info.outDouble = real;
}

void WriteText(const TCallInfo& info, const std::wstring& text)
{
  if (!info.outText || info.outLength < 1) return;
  const size_t length = std::min(text.size(), static_cast<size_t>(info.outLength) - 1);
  std::wmemcpy(info.outText, text.data(), length);
  info.outText[length] = L'\0';
}

/// Applies a rule to a call in place of its body. Returns the code of the call.
int ActOnCall(const TCallInfo& info, const TFaultRule& rule, const std::function<int()>& body)
{
  if (rule.fault.durationNs > 0) std::this_thread::sleep_for(std::chrono::nanoseconds(rule.fault.durationNs));
  switch (rule.callFault) {
  case ECallFault::Delay:
    return body();
  case ECallFault::Output:
    WriteNumber(info, rule.fault.number, static_cast<double>(rule.fault.number));
    return VX_SUCCESS;
  case ECallFault::Unterminated:
    if (info.outText && info.outLength > 0) std::wmemset(info.outText, L'X', static_cast<size_t>(info.outLength));
    return VX_SUCCESS;
  default:
    // Success with nothing done: a wait then delivers no buffer.
    if (rule.fault.number == VX_SUCCESS && info.outBuffer) *info.outBuffer = nullptr;
    if (rule.fault.number == VX_SUCCESS && info.outBuffer && info.outInt) *info.outInt = 0;
    return static_cast<int>(rule.fault.number);
  }
}

int RunWithFaults(const TCallInfo& info, const std::function<int()>& body)
{
  TFaultPlan& plan = TFaultPlan::Instance();
  if (TFaultPlan::IsEmpty()) return body();
  const int device = DeviceOf(info);
  const std::optional<TFaultRule> onCall = plan.OnCall(info.function, FeatureOf(info), device);
  if (onCall && onCall->callFault != ECallFault::Delay) return ActOnCall(info, *onCall, body);
  const int code = onCall ? ActOnCall(info, *onCall, body) : body();
  if (!info.isRead || !info.feature) return code;

  const std::optional<TFaultRule> onRead = plan.OnRead(FeatureOf(info), device);
  if (!onRead) return code;
  WriteNumber(info, std::strtoll(onRead->text.c_str(), nullptr, 0), std::strtod(onRead->text.c_str(), nullptr));
  WriteText(info, FromUtf8(onRead->text));
  return VX_SUCCESS;
}

} // namespace

int RunInstrumented(const TCallInfo& info, const std::function<int()>& body)
{
  const int code = RunWithFaults(info, body);
  TCallLog& log = TCallLog::Instance();
  const bool isWait = std::strcmp(info.function, "VX_WaitBuffer") == 0;
  if (log.IsOn() && (!isWait || log.IncludesWaits())) log.Append(Line(info, code));
  return code;
}

} // namespace vxcore
