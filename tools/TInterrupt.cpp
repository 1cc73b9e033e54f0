// SPDX-License-Identifier: MIT
// Signal handling.
#include "tools/TInterrupt.h"

#include <csignal>

namespace vxtool {

namespace {

volatile std::sig_atomic_t happened = 0;

void Remember(int)
{
  happened = 1;
}

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

} // namespace

TInterrupt::TInterrupt()
{
  happened = 0;
  struct sigaction action = {};
  action.sa_handler = Remember;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  for (const int number : kSignals) sigaction(number, &action, nullptr);
  std::signal(SIGXFSZ, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN);
}

TInterrupt::~TInterrupt()
{
  for (const int number : kSignals) std::signal(number, SIG_DFL);
}

bool TInterrupt::Happened()
{
  return happened != 0;
}

} // namespace vxtool
