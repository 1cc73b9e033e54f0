// SPDX-License-Identifier: MIT
// Puts the library's own texts for a result code together.
#include "tools/ResultText.h"

#include "vxmcd.h"

namespace vxtool {

std::string ResultText(const std::string& function, unsigned int code)
{
  std::string text = function + ": " + std::to_string(code) + " " + vxmcd_GetResultName(code);
  const std::string meaning = vxmcd_GetResultMeaning(code);
  const std::string advice = vxmcd_GetResultAdvice(code);
  if (!meaning.empty()) text += ": " + meaning;
  if (!advice.empty()) text += "; " + advice;
  return text;
}

} // namespace vxtool
