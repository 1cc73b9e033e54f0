// SPDX-License-Identifier: MIT
// The queue of finite runs, whose images all stay.
#include "acquisition/TDispatchQueue_Ignore.h"

int TDispatchQueue_Ignore::Dispatch(unsigned char* buffer, int /*sizeBytes*/)
{
  CountFrame(buffer);
  return 0;
}
