// SPDX-License-Identifier: MIT
// Map files, and which source of a feature a camera has.
#include "vxcore/genicam/TFeatureMap.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace vxgenicam {

namespace {

static_assert(std::ranges::is_sorted(kMapRows, {}, [](const TMapRow& row) { return std::string_view(row.name); }));

const TMapRow* RowOf(std::string_view feature)
{
  const auto* const found = std::ranges::find(kMapRows, feature, &TMapRow::name);
  return found == std::end(kMapRows) ? nullptr : found;
}

} // namespace

bool TFeatureMap::Read(const std::string& path, std::string& error)
{
  std::string text;
  std::vector<vxcore::TConfigurationEntry> entries;
  const bool isRead =
      vxcore::ReadConfigurationFile(path, text, error) && vxcore::ReadEntries(text, entries, error) &&
      std::ranges::all_of(entries, [this, &error](const auto& entry) { return ReadEntry(entry, error); });
  if (!isRead) error = path + ": " + error;
  return isRead;
}

bool TFeatureMap::ReadEntry(const vxcore::TConfigurationEntry& entry, std::string& error)
{
  const std::string where = "line " + std::to_string(entry.line) + ", " + entry.key;
  const TMapRow* row = RowOf(entry.key);
  if (!row) {
    error = where + ": no feature that can be mapped has this name";
    return false;
  }
  const std::vector<std::string> parts = vxcore::Split(entry.value, ',');
  constexpr double kAny = std::numeric_limits<double>::max();
  TSource source{"", row->scale, 0.0};
  const bool isRead = !parts.empty() && parts.size() <= 3 && !parts[0].empty() &&
                      (parts.size() < 2 || vxcore::ReadNumber(parts[1], -kAny, kAny, source.scale)) &&
                      (parts.size() < 3 || vxcore::ReadNumber(parts[2], -kAny, kAny, source.offset)) &&
                      source.scale != 0.0;
  if (!isRead) {
    error = where + ": '" + entry.value +
            "' is not the name of a camera's feature, or the name, a scale other than 0, " + "and an offset";
    return false;
  }
  source.node = parts[0];
  replaced_[entry.key] = source;
  return true;
}

TSource TFeatureMap::SourceOf(std::string_view feature, const TNodes& nodes) const
{
  if (const auto found = replaced_.find(feature); found != replaced_.end())
    return nodes.Has(found->second.node) ? found->second : TSource{};
  const TMapRow* row = RowOf(feature);
  if (!row) return {};
  for (const char* name : row->nodes)
    if (name && nodes.Has(name)) return {name, row->scale, 0.0};
  return {};
}

EOrigin TFeatureMap::OriginOf(std::string_view feature) const
{
  if (replaced_.contains(feature)) return EOrigin::MapFile;
  const TMapRow* row = RowOf(feature);
  return row ? row->origin : EOrigin::Emulated;
}

std::vector<std::string> TFeatureMap::NamesFor(std::string_view feature) const
{
  if (const auto found = replaced_.find(feature); found != replaced_.end()) return {found->second.node};
  std::vector<std::string> names;
  if (const TMapRow* row = RowOf(feature))
    for (const char* name : row->nodes)
      if (name) names.emplace_back(name);
  return names;
}

} // namespace vxgenicam
