// SPDX-License-Identifier: MIT
// Answers of the feature library that a test sets as it likes.
#pragma once

#include <string>
#include <vector>

/// What the scripted VX_ functions of this test program answer, and what they were asked. One enumerated feature,
/// one integer and one boolean are enough.
struct TScriptedVx
{
  int code = 0; ///< of every call
  int flag = 0; ///< of the queries
  int index = 0;
  int failsFromIndex = -1; ///< texts from this index on cannot be read
  int count = -2;          ///< as reported; -2 is the true count
  std::vector<std::wstring> texts;
  bool unterminated = false; ///< texts fill the whole buffer
  long long integer = 0;
  int boolean = 0;

  std::vector<std::string> calls;

  /// The one that the functions use now; made anew by each test.
  static TScriptedVx& Instance();
};
