// SPDX-License-Identifier: MIT
// What a test puts into the diagnostic log.
#include "tests/spool/TLogFile.h"

#include "utility/TQuorinLibDebugOutput.h"

#include <sstream>
#include <stdexcept>

using QuorinUtility::TQuorinLibDebugOutput;

TLogFile::TLogFile()
{
  const std::string setting = "warning:" + directory_.Directory() + "/log";
  if (!TQuorinLibDebugOutput::Configure(setting.c_str())) throw std::runtime_error("no log");
}

TLogFile::~TLogFile()
{
  TQuorinLibDebugOutput::Configure(nullptr);
}

std::vector<std::string> TLogFile::Lines() const
{
  std::istringstream text(TextOf(directory_.Directory() + "/log"));
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  return lines;
}
