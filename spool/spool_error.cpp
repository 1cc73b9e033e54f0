// SPDX-License-Identifier: MIT
// How the spool file classes report wrong use.
#include "spool/spool_error.h"

#include "features/TSDK3Exception.h"
#include "utility/TQuorinLibDebugOutput.h"

#include <string>

using QuorinUtility::TQuorinLibDebugOutput;

void LogAndThrow(const char* file, int line, const char* function, const char* text)
{
  LogAndThrow(file, line, function, text, text);
}

void LogAndThrow(const char* file, int line, const char* function, const char* logged, const char* thrown)
{
  TQuorinLibDebugOutput::OutputText(file, line, function, TQuorinLibDebugOutput::Error, logged);
  throw TSDK3Exception(std::string(thrown));
}
