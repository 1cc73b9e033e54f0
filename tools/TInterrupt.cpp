// SPDX-License-Identifier: MIT
// Signal handling.
#include "tools/TInterrupt.h"

#include <atomic>
#include <csignal>

namespace vxtool {

namespace {

std::atomic<bool> happened = false; // asked by the threads of several cameras
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");

void Remember(int)
{
  happened = true;
}

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

} // namespace

TInterrupt::TInterrupt()
{
  happened = false;
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
  return happened;
}

} // namespace vxtool
