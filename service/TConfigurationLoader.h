// SPDX-License-Identifier: MIT
// The library that creates a camera's configuration.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

class IConfiguration;

namespace QuorinUtility {
class TQuorinDynamicLoader;
}

/// Loads the optional configuration library and gets a camera's configuration, the contents of its EEPROM, from it.
/// Owned by the camera's record, which returns the configuration before it destroys the loader. One thread at a time.
/// Without the library, or the functions that make configurations, there is none; exceptions of these functions pass
/// through.
class TConfigurationLoader final
{
public:
  /// Size of the buffer for a library's name.
  static constexpr std::size_t kNameSize = 128;

  explicit TConfigurationLoader(int coreHandle);
  /// Closes the library.
  ~TConfigurationLoader();
  TConfigurationLoader(const TConfigurationLoader&) = delete;
  TConfigurationLoader& operator=(const TConfigurationLoader&) = delete;

  /// Writes the file name of the configuration library with this stem; a stem that is too long is cut, and then there
  /// is no ".so" after it.
  /// @param out  room for kNameSize characters
  /// @return the length of the name without ".so"
  static std::size_t createLibName(const char* stem, char* out);

  /// Null when the library creates none.
  IConfiguration* GetConfiguration();
  /// Returns the answer of the library, 0 when it has no such function, or the code of why it is not loaded.
  int DestroyConfiguration(IConfiguration* configuration);

private:
  std::unique_ptr<QuorinUtility::TQuorinDynamicLoader> loader_;
  std::int32_t coreHandle_;
};
