// SPDX-License-Identifier: MIT
// A lock, and the choice of the current camera.
#include "tools/TCameraTurn.h"

#include "vxmcd.h"

#include <mutex>

namespace vxtool {

namespace {

std::recursive_mutex& TurnMutex()
{
  static std::recursive_mutex mutex;
  return mutex;
}

unsigned int MakeCurrent(long handle)
{
  long current = 0;
  const unsigned int code = GetCurrentCamera(&current);
  return code == RC_SUCCESS && current != handle ? SetCurrentCamera(handle) : code;
}

} // namespace

TCameraTurn::TCameraTurn(long handle)
{
  TurnMutex().lock();
  code_ = MakeCurrent(handle);
}

TCameraTurn::~TCameraTurn()
{
  TurnMutex().unlock();
}

} // namespace vxtool
