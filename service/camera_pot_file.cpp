// SPDX-License-Identifier: MIT
// One potentiometer of a potentiometer file.
#include "service/camera_pot_file.h"

#include "ini/private_profile.h"
#include "ini/TIniFileParser.h"
#include "utility/TQuorinMisc.h"

#include <cstddef>
#include <memory>

using QuorinUtility::TQuorinMisc;

namespace {

constexpr const char* kCountKey = "NoPots";

// After "Pot", the number of the potentiometer and "_".
constexpr const char* kName = "Name";
constexpr const char* kI2cAddress = "I2CAddress";
constexpr const char* kI2cInternalAddress = "I2CInternalAddress";
constexpr const char* kMaximum = "Max";
constexpr const char* kMinimum = "Min";
constexpr const char* kDefault = "Default";
constexpr const char* kMaximumAllowed = "MaxAllowedValue";
constexpr const char* kMinimumAllowed = "MinAllowedValue";
constexpr const char* kRailI2cAddress = "RailI2CAddressHex";
constexpr const char* kRailI2cInternalAddress = "RailI2CInternalAddressHex";
constexpr const char* kRailMaximum = "RailVoltageMax";
constexpr const char* kRailMinimum = "RailVoltageMin";

constexpr const char* kZeroHex = "0x00";
constexpr const char* kFullHex = "0xFF";

/// The keys of one potentiometer. Lives on the stack of one call; borrows the names.
class TPotKeys final
{
public:
  TPotKeys(const char* fileName, const char* group, int pot) : fileName_(fileName), group_(group), pot_(pot) {}

  template <std::size_t Size>
  void ReadText(const char* suffix, std::array<char, Size>& text) const
  {
    const auto value = std::make_unique<char[]>(TIniFileParser::MAX_SIZE_CHAR_ARRAY);
    TIniFileParser::GetStringFromSection(fileName_, group_, Key(suffix).data(), value.get());
    TQuorinMisc::strncpy(text.data(), value.get(), Size);
  }
  int ReadInt(const char* suffix) const
  {
    return TIniFileParser::GetIntFromSection(fileName_, group_, Key(suffix).data());
  }
  unsigned int ReadHex(const char* suffix) const
  {
    return TIniFileParser::GetIntHexFromSection(fileName_, group_, Key(suffix).data());
  }
  unsigned int ReadHex(const char* suffix, const char* defaultText) const
  {
    return TIniFileParser::GetIntHexFromSectionDefault(fileName_, group_, Key(suffix).data(), defaultText);
  }
  float ReadFloat(const char* suffix) const
  {
    return TIniFileParser::GetFloatFromSection(fileName_, group_, Key(suffix).data());
  }

  void WriteText(const char* suffix, const char* text) const
  {
    EntryPoint::WritePrivateProfileString(group_, Key(suffix).data(), text, fileName_);
  }
  template <class TValue>
  void Write(const char* suffix, const char* format, TValue value) const
  {
    std::array<char, 64> text;
    TQuorinMisc::snprintf(text.data(), text.size(), format, value);
    WriteText(suffix, text.data());
  }

private:
  std::array<char, 64> Key(const char* suffix) const
  {
    std::array<char, 64> key;
    TQuorinMisc::snprintf(key.data(), key.size(), "Pot%d_%s", pot_, suffix);
    return key;
  }

  const char* fileName_;
  const char* group_;
  int pot_;
};

} // namespace

TCameraPot ReadCameraPot(const char* fileName, const char* group, int pot)
{
  const TPotKeys keys(fileName, group, pot);
  TCameraPot description;
  keys.ReadText(kName, description.name);
  description.i2cAddress = keys.ReadHex(kI2cAddress);
  description.i2cInternalAddress = static_cast<std::uint32_t>(keys.ReadInt(kI2cInternalAddress));
  description.maximum = keys.ReadFloat(kMaximum);
  description.minimum = keys.ReadFloat(kMinimum);
  description.defaultValue = keys.ReadInt(kDefault);
  description.currentValue = TCameraPot::kUnknown;
  description.maximumAllowedValue = keys.ReadHex(kMaximumAllowed, kFullHex);
  description.minimumAllowedValue = keys.ReadHex(kMinimumAllowed, kZeroHex);
  description.railI2cAddress = keys.ReadHex(kRailI2cAddress, kZeroHex);
  description.railI2cInternalAddress = keys.ReadHex(kRailI2cInternalAddress, kZeroHex);
  description.railVoltageMaximum = keys.ReadFloat(kRailMaximum);
  description.railVoltageMinimum = keys.ReadFloat(kRailMinimum);
  return description;
}

void WriteCameraPot(const char* fileName, const char* group, int pot, const TCameraPot& description)
{
  const TPotKeys keys(fileName, group, pot);
  keys.WriteText(kName, description.name.data());
  keys.Write(kI2cAddress, "%02X", description.i2cAddress);
  keys.Write(kI2cInternalAddress, "%02d", static_cast<int>(description.i2cInternalAddress));
  keys.Write(kMaximum, "%0.4f", static_cast<double>(description.maximum));
  keys.Write(kMinimum, "%0.4f", static_cast<double>(description.minimum));
  keys.Write(kDefault, "%03d", description.currentValue);
  keys.Write(kRailI2cAddress, "%02X", description.railI2cAddress);
  keys.Write(kRailI2cInternalAddress, "%02X", description.railI2cInternalAddress);
  keys.Write(kRailMaximum, "%0.4f", static_cast<double>(description.railVoltageMaximum));
  keys.Write(kRailMinimum, "%0.4f", static_cast<double>(description.railVoltageMinimum));
}

void WriteCameraPotCount(const char* fileName, const char* group, int count)
{
  std::array<char, 16> text;
  TQuorinMisc::snprintf(text.data(), text.size(), "%d", count);
  EntryPoint::WritePrivateProfileString(group, kCountKey, text.data(), fileName);
}

int ReadCameraPotCount(const char* fileName, const char* group)
{
  return TIniFileParser::GetIntFromSection(fileName, group, kCountKey);
}
