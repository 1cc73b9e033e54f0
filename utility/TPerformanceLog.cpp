// SPDX-License-Identifier: MIT
// A thread's performance log.
#include "utility/TPerformanceLog.h"

#include "utility/TQuorinMisc.h"
#include "utility/TQuorinTime.h"

void TPerformanceLog::Open()
{
  if (!enabled_) return;
  file_.open(fileName_, std::ios::app);
  file_ << header_ << std::endl;
}

void TPerformanceLog::Close()
{
  if (file_.is_open()) file_.close();
}

void TPerformanceLog::WriteLine(const char* message, long frameNumber)
{
  if (!file_.is_open()) return;
  TQuorinTime now;
  now.GetCurrentSystemTime();
  file_ << message << "," << frameNumber << "," << QuorinUtility::TQuorinMisc::GetThreadID() << ","
        << now.Microseconds() << std::endl;
}
