// SPDX-License-Identifier: MIT
// What an action puts into the diagnostic log.
#pragma once

#include "utility/TQuorinLibDebugOutput.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>

/// Runs @p act and returns the lines that it logged, warnings included.
inline std::string LoggedBy(const std::function<void()>& act)
{
  testing::internal::CaptureStderr();
  EXPECT_TRUE(QuorinUtility::TQuorinLibDebugOutput::Configure("warning:stderr"));
  act();
  QuorinUtility::TQuorinLibDebugOutput::Configure(nullptr);
  return testing::internal::GetCapturedStderr();
}
