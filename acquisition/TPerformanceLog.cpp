// SPDX-License-Identifier: MIT
// The acquisition thread's performance log.
#include "acquisition/TPerformanceLog.h"

#include "utility/TQuorinMisc.h"
#include "utility/TQuorinTime.h"

void TPerformanceLog::Open()
{
  if (!enabled_) return;
  file_.open("acquisitionthread.csv", std::ios::app);
  // The header names fewer columns than the rows have; tools that read the file rely on both.
  file_ << "Frame Number"
        << ","
        << "Time to Dispatch To Spooler"
        << ","
        << "Time to Send Frame Req" << std::endl;
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
