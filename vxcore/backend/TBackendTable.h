// SPDX-License-Identifier: MIT
// The backends that the configuration leaves switched on, and how their devices are numbered.
#pragma once

#include "vxcore/backend/configuration_text.h"
#include "vxcore/backend/IDeviceBackend.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vxcore {

/// What a backend is made from: the entries of its sections, or null without any configuration.
using TBackendEntries = std::vector<TConfigurationEntry>;

/// A backend that the library knows.
struct TBackendRow
{
  const char* name; ///< its key in [Backends]
  /// Whether a section of the configuration is the backend's.
  bool (*ownsSection)(std::string_view section);
  /// Null without a message: it has no devices. Null, with a message: the entries have an error.
  std::unique_ptr<IDeviceBackend> (*make)(const TBackendEntries* entries, std::string& error);
  /// An environment variable that stands for a configuration with this backend alone, whose section, named as the
  /// backend, has the variable's value for one key. Null for none.
  struct TShortForm
  {
    const char* variable;
    const char* key;
  } shortForm = {nullptr, nullptr};
};

/// The table of backends: vxcore/backends.cpp.
std::span<const TBackendRow> KnownBackends();

/// The configuration that a variable of a TShortForm stands for; nothing when none is set. False, with a message, when it
/// is not a single line, or two of them are set.
bool ReadShortForm(std::optional<std::string>& text, std::string& error);

/// The backends of one configuration. Its devices are numbered from 0: first those of the first backend in the
/// order of KnownBackends(), then those of the second, and so on. Constant once it is loaded; owned by TDeviceTable.
class TBackendTable final
{
public:
  struct TPlace
  {
    IDeviceBackend* backend = nullptr;
    int index = 0; ///< the device's number in its backend
  };

  /// Makes every backend that the text does not switch off; without a text each as it is without configuration.
  /// False, with a message, when the text has an error.
  bool Load(const std::optional<std::string>& text, std::string& error);

  int DeviceCount() const;
  /// False when there is no such device.
  bool Find(int device, TPlace& place) const;
  /// The rules of [Faults], not yet understood.
  const std::vector<std::string>& FaultRules() const { return faultRules_; }

private:
  std::vector<std::unique_ptr<IDeviceBackend>> backends_;
  std::vector<std::string> faultRules_;
};

} // namespace vxcore
