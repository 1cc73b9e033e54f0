// SPDX-License-Identifier: MIT
// One feature of an open camera by its name: what it is, what it is set to, and setting it.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vxtool {

enum class FeatureKind
{
  Enumerated,
  Integer,
  Float,
  Boolean,
  String,
  Command,
};

/// Nothing; an integer; a number; a boolean; a text, also of an enumerated feature.
using TFeatureValue = std::variant<std::monostate, long long, double, bool, std::string>;

/// A value of an enumerated feature.
struct TFeatureWord
{
  std::string text;
  bool isAvailable = false; ///< under the present settings
};

struct TCameraFeature
{
  std::string name;
  FeatureKind kind = FeatureKind::Command;
  bool isWritable = false;
  TFeatureValue value;             ///< nothing for a command, and when it cannot be read
  std::string whyNotRead;          ///< then
  TFeatureValue minimum;           ///< numbers only
  TFeatureValue maximum;           ///< numbers only
  std::vector<TFeatureWord> words; ///< enumerated features only
};

/// "NAME=VALUE" of the command line.
struct TFeatureSetting
{
  std::string name;
  std::string value;
};

/// Asks the camera with this handle of the feature library. False when it has no such feature.
bool ReadFeature(int handle, const std::string& name, TCameraFeature& feature);
/// The value as a text; nothing when the camera has no such feature, or it cannot be read or is empty.
std::optional<std::string> FeatureText(int handle, const std::string& name);
/// Sets a feature by the text of its value. Returns why not, without its name, "" after success; @p feature
/// is then what it is set to.
std::string SetFeature(int handle, const TFeatureSetting& setting, TCameraFeature& feature);

/// "" for nothing; numbers with as many digits as they need; booleans as "on" and "off".
std::string FeatureValueText(const TFeatureValue& value);
/// Why ReadFeature() was false for a name, with the nearest one that the camera has.
std::string NoFeatureText(int handle, const std::string& name);

} // namespace vxtool
