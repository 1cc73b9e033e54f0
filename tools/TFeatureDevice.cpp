// SPDX-License-Identifier: MIT
// Opening and closing, and the meaning of codes.
#include "tools/TFeatureDevice.h"

namespace vxtool {

namespace {

struct TMeaning
{
  int code;
  const char* text;
};

constexpr TMeaning kMeanings[] = {
#define VX_CODE(name, meaning) {name, meaning},
#include "vxcore/result_codes.def"
};

} // namespace

TFeatureDevice::~TFeatureDevice()
{
  if (handle_ != VX_HANDLE_NONE) VX_Close(handle_);
  if (isInitialised_) VX_FinaliseLibrary();
}

int TFeatureDevice::Open(int index)
{
  if (const int code = VX_InitialiseLibrary(); code != VX_SUCCESS) return code;
  isInitialised_ = true;
  const int code = VX_Open(index, &handle_);
  if (code != VX_SUCCESS) handle_ = VX_HANDLE_NONE;
  return code;
}

std::string FeatureCodeText(const std::string& function, int code)
{
  std::string text = function + ": " + std::to_string(code);
  for (const TMeaning& meaning : kMeanings)
    if (meaning.code == code) return text + ": " + meaning.text;
  return text;
}

} // namespace vxtool
