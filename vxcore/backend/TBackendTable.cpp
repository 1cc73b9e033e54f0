// SPDX-License-Identifier: MIT
// Divides a configuration among the backends.
#include "vxcore/backend/TBackendTable.h"

#include <algorithm>
#include <cstdlib>

namespace vxcore {

namespace {

constexpr const char* kFaultSection = "Faults";
constexpr const char* kBackendSection = "Backends";

/// The entries of one backend, and whether it is switched on.
struct TShare
{
  const TBackendRow& row;
  bool isOn = true;
  TBackendEntries entries;
};

bool ReadBackendSwitch(const TConfigurationEntry& entry, std::vector<TShare>& shares, std::string& error)
{
  const auto named =
      std::ranges::find_if(shares, [&entry](const TShare& share) { return entry.key == share.row.name; });
  if (named == shares.end()) {
    error = entry.Where() + ": no backend has this name";
    return false;
  }
  if (ReadSwitch(entry.value, named->isOn)) return true;
  error = entry.Where() + ": '" + entry.value + "' is not a valid value; on or off is";
  return false;
}

bool Divide(const std::string& text, std::vector<TShare>& shares, std::vector<std::string>& faultRules,
            std::string& error)
{
  std::vector<TConfigurationEntry> entries;
  if (!ReadEntries(text, entries, error)) return false;
  for (TConfigurationEntry& entry : entries) {
    if (entry.section == kBackendSection) {
      if (!ReadBackendSwitch(entry, shares, error)) return false;
      continue;
    }
    if (entry.section == kFaultSection) {
      if (entry.key != "Rule") {
        error = entry.Where() + ": unknown key";
        return false;
      }
      faultRules.push_back(entry.value);
      continue;
    }
    const auto owner = std::ranges::find_if(
        shares, [&entry](const TShare& share) { return share.row.ownsSection(entry.section); });
    if (owner == shares.end()) {
      error = entry.Where() + ": unknown section";
      return false;
    }
    owner->entries.push_back(std::move(entry));
  }
  return true;
}

} // namespace

bool ReadShortForm(std::optional<std::string>& text, std::string& error)
{
  for (const TBackendRow& row : KnownBackends()) {
    const char* variable = row.shortForm.variable;
    // A privileged process takes no configuration of its caller's choice.
    const char* value =
        variable ? secure_getenv(variable) : nullptr; // NOLINT(concurrency-mt-unsafe): not set here
    if (!value || !*value) continue;
    if (text) {
      error = std::string(variable) + ": another variable says which cameras there are; set only one of them";
      return false;
    }
    if (std::string_view(value).find_first_of("\r\n") != std::string_view::npos) {
      error = std::string(variable) + ": is more than one line";
      return false;
    }
    text.emplace(std::string("[") + kBackendSection + "]\n");
    for (const TBackendRow& other : KnownBackends())
      if (&other != &row) *text += std::string(other.name) + " = off\n";
    *text += std::string("[") + row.name + "]\n" + row.shortForm.key + " = " + value + "\n";
  }
  return true;
}

bool TBackendTable::Load(const std::optional<std::string>& text, std::string& error)
{
  std::vector<TShare> shares;
  for (const TBackendRow& row : KnownBackends()) shares.push_back({row, true, {}});
  if (text && !Divide(*text, shares, faultRules_, error)) return false;
  for (const TShare& share : shares) {
    if (!share.isOn) continue;
    std::string reason;
    std::unique_ptr<IDeviceBackend> backend = share.row.make(text ? &share.entries : nullptr, reason);
    if (backend)
      backends_.push_back(std::move(backend));
    else if (!reason.empty()) {
      error = reason;
      return false;
    }
  }
  return true;
}

int TBackendTable::DeviceCount() const
{
  int count = 0;
  for (const auto& backend : backends_) count += backend->Enumerate();
  return count;
}

bool TBackendTable::Find(int device, TPlace& place) const
{
  if (device < 0) return false;
  for (const auto& backend : backends_) {
    const int count = backend->Enumerate();
    if (device < count) {
      place = {backend.get(), device};
      return true;
    }
    device -= count;
  }
  return false;
}

} // namespace vxcore
