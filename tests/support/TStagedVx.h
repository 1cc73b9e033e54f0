// SPDX-License-Identifier: MIT
// A device that exists only as answers: features, staged transfers, and whatever goes wrong with them.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

/// What the scripted VX_ functions of a test program answer, and what they were asked. Integers are kept by feature.
/// "...I2CByte" and "RegisterValue" show what the staged selector or index addresses; every other feature is a plain
/// value. Calls are noted as the operation without "VX_", the feature and the value: "SetInt RegisterIndex 0".
struct TStagedVx
{
  std::map<std::string, long long> integers;
  std::map<std::string, std::string> strings;
  std::vector<unsigned char> bytes; ///< of the I2C device
  std::map<long long, long long> registers;
  std::map<std::string, int> codes; ///< by call, or by what a call begins with: the code it answers
  std::map<std::string, int> flags; ///< of the queries, 1 unless given here
  int maxLength = 64;               ///< of strings
  std::vector<std::wstring> texts;  ///< of the values of every enumerated feature
  std::optional<int> count;         ///< of the values, when it is not the true one
  bool fillsTexts = false;          ///< the texts of values fill their buffer without an end

  std::vector<std::string> calls;

  /// The one that the functions use now; made anew by each test.
  static TStagedVx& Instance();
  /// Notes a call. Returns its code.
  int Call(const std::string& call);
};
