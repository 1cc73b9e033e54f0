// SPDX-License-Identifier: MIT
// Reads what the feature library says of the sources of features.
#include "tools/FeatureSources.h"

#include "tools/CameraFeature.h"
#include "tools/KnownFeatures.h"
#include "tools/Messages.h"

#include <charconv>
#include <sstream>

namespace vxtool {

namespace {

constexpr std::size_t kColumns = 6;

std::vector<std::string> Split(const std::string& text, char separator)
{
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
  return parts;
}

double NumberOf(const std::string& text, double otherwise)
{
  double number = otherwise;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

std::vector<TFeatureSource> Parse(const std::string& text)
{
  std::vector<TFeatureSource> sources;
  for (const std::string& line : Split(text, '\n')) {
    std::vector<std::string> columns = Split(line, '\t');
    columns.resize(kColumns);
    sources.push_back({columns[0], columns[1], columns[2], Split(columns[3], ','), NumberOf(columns[4], 1.0),
                       NumberOf(columns[5], 0.0)});
  }
  return sources;
}

} // namespace

std::vector<TFeatureSource> FeatureSourcesOf(int handle)
{
  if (const auto text = FeatureText(handle, kFeatureSources)) return Parse(*text);
  const std::string source = FeatureText(handle, "DeviceSource").value_or("feature library");
  std::vector<TFeatureSource> sources;
  TCameraFeature feature;
  for (const TKnownFeature& known : KnownFeatures())
    if (ReadFeature(handle, known.name, feature)) sources.push_back({known.name, source, "", {}});
  return sources;
}

std::string WhyNoFeature(const TFeatureSource& source)
{
  if (!source.behind.empty()) return "the library can make no use of the camera's " + source.behind;
  if (source.candidates.empty()) return "no map file names a feature of the camera for it";
  return "the camera has no " + ChoiceText(source.candidates);
}

} // namespace vxtool
