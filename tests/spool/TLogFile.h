// SPDX-License-Identifier: MIT
// What a test puts into the diagnostic log.
#pragma once

#include "tests/ini/TScratchDirectory.h"

#include <string>
#include <vector>

/// Switches the log on while it exists, warnings included.
class TLogFile final
{
public:
  TLogFile();
  ~TLogFile();
  TLogFile(const TLogFile&) = delete;
  TLogFile& operator=(const TLogFile&) = delete;

  std::vector<std::string> Lines() const;

private:
  TScratchDirectory directory_;
};
