// SPDX-License-Identifier: MIT
// Lines of the log about calls of the library.
#include "api/call_log.h"

#include "acquisition/TVxmcdAcquisitionManager.h"
#include "api/entry_points.h"
#include "api/TCameraUse.h"
#include "utility/TQuorinLibDebugOutput.h"

#include <cstdarg>

using QuorinUtility::TQuorinLibDebugOutput;

namespace {

// Codes of arguments, in their order.
constexpr unsigned int kInvalid[] = {RC_P1_INVALID, RC_P2_INVALID, RC_P3_INVALID,
                                     RC_P4_INVALID, RC_P5_INVALID, RC_P6_INVALID};

// Some functions have 0 for success.
bool IsSuccess(unsigned int code)
{
  return code == RC_SUCCESS || code == 0;
}

// The number of the argument that the code is about, if it is null; 0 for none.
std::size_t NullArgument(std::span<const TCallArgument> arguments, unsigned int code)
{
  for (std::size_t i = 0; i < std::size(kInvalid) && i < arguments.size(); ++i)
    if (kInvalid[i] == code && arguments[i].IsNull()) return i + 1;
  return 0;
}

// What a camera refuses, it mostly refuses because of that.
bool IsAcquiring()
{
  const TCameraUse camera;
  return camera && camera.Manager().IsRunning();
}

} // namespace

void LogCall(const char* function, std::span<const TCallArgument> arguments, unsigned int code,
             const TCallNotes& notes) noexcept
{
  if (IsSuccess(code) && !notes.HasFailure()) return;

  TBoundedText<512> call;
  call.Append("%s(", function);
  for (const TCallArgument& argument : arguments) {
    if (&argument != &arguments.front()) call.Append(", ");
    argument.AppendTo(call);
  }
  call.Append("):");

  TBoundedText<1536> answer;
  answer.Append("%u", code);
  if (*EntryPoint::vxmcd_GetResultMeaning(code) != '\0')
    answer.Append(" %s", EntryPoint::vxmcd_GetResultName(code));
  if (IsSuccess(code))
    answer.Append(", although %s", notes.Text());
  else if (const std::size_t number = NullArgument(arguments, code))
    answer.Append(": argument %zu is null", number);
  else if (*notes.Text() != '\0')
    answer.Append(": %s", notes.Text());
  else if (*EntryPoint::vxmcd_GetResultMeaning(code) != '\0')
    answer.Append(": %s", EntryPoint::vxmcd_GetResultMeaning(code));
  if (notes.HasFailure() && IsAcquiring()) answer.Append("; the camera is acquiring");
  TQuorinLibDebugOutput::Output(__FILE__, __LINE__, call.Data(), TQuorinLibDebugOutput::Debug, "%s",
                                answer.Data());
}

unsigned int Refuse(unsigned int code, const char* format, ...) noexcept
{
  std::va_list arguments;
  va_start(arguments, format);
  TCallNotes::AddDetail(format, arguments);
  va_end(arguments);
  return code;
}
