// SPDX-License-Identifier: MIT
// The output of a thread.
#include "tools/TCameraOutput.h"

namespace vxtool {

namespace {
thread_local TCameraOutput* ofThread = nullptr;
} // namespace

TCameraOutput::TCameraOutput(TProgressRows& rows, std::size_t row) : rows_(rows), row_(row)
{
  ofThread = this;
}

TCameraOutput::~TCameraOutput()
{
  ofThread = nullptr;
}

TCameraOutput* TCameraOutput::OfThread()
{
  return ofThread;
}

} // namespace vxtool
