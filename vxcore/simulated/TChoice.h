// SPDX-License-Identifier: MIT
// Enumerated settings: their names, their texts, and what the texts mean to the camera.
#pragma once

#include "vxcore/simulated/TThermalModel.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vxsim {

/// The enumerated features that a camera may have.
enum class EChoice
{
  AoiLayout,
  AoiBinning,
  PixelEncoding,
  CycleMode,
  TriggerMode,
  TriggerConfiguration,
  ShutteringMode,
  PixelReadoutRate,
  PreAmpGainChannel,
  PreAmpGainSelector,
  PreAmpGain,
  SimplePreAmpGainControl,
  BitDepth,
  FanSpeed,
  TemperatureStatus,
};
constexpr size_t kChoiceCount = static_cast<size_t>(EChoice::TemperatureStatus) + 1;

// What texts mean. The first enumerator is also that of a text which the camera does not know.
enum class ELayout
{
  Image,
  Track
};
enum class ECycle
{
  Fixed,
  Continuous
};
enum class ETrigger
{
  Unknown, ///< the camera times itself, at a rate that cannot be written
  Internal,
  Software,
  External, ///< also any other text that begins so
  ExternalStart,
  ExternalExposure,
  ExternalLevelTransition,
};
/// Pulses on the external trigger input act.
constexpr bool IsExternal(ETrigger trigger)
{
  return trigger >= ETrigger::External;
}
enum class EEdges
{
  Rising,
  Falling,
  Both
};
enum class EShutter
{
  Unknown,
  Rolling,
  Global
};
enum class EGainChannels
{
  One,
  Both
};
enum class EFifoBits
{
  Other,
  Eleven
};

/// An enumerated setting: what it can be and what it is. A configuration may add, drop and reorder its texts, so the
/// camera decides by their meanings, which are read once, and never by indices. Without texts the camera lacks it.
class TChoice final
{
public:
  /// Takes texts, each with its meaning to this setting.
  void SetTexts(EChoice choice, std::vector<std::wstring> texts);
  const std::vector<std::wstring>& Texts() const { return texts_; }

  bool Exists() const { return !texts_.empty(); }
  bool Has(int index) const { return index >= 0 && static_cast<size_t>(index) < texts_.size(); }
  int Index() const { return index_; }
  std::wstring_view Text() const { return TextAt(index_); }
  std::wstring_view TextAt(int index) const
  {
    return Has(index) ? std::wstring_view(texts_[static_cast<size_t>(index)]) : std::wstring_view();
  }
  /// The index of a text, or -1.
  int Find(std::wstring_view text) const;

  /// The enumerator that a text stands for.
  template <typename Enum>
  Enum Meaning() const
  {
    return MeaningAt<Enum>(index_);
  }
  template <typename Enum>
  Enum MeaningAt(int index) const
  {
    return static_cast<Enum>(Has(index) ? meanings_[static_cast<size_t>(index)] : 0);
  }

  /// Chooses an index, or a text; nothing happens when there is none like it.
  void Choose(int index)
  {
    if (Has(index)) index_ = index;
  }
  void Choose(std::wstring_view text) { Choose(Find(text)); }

private:
  std::vector<std::wstring> texts_;
  std::vector<int> meanings_;
  int index_ = 0;
};

/// Every enumerated setting of a camera.
using TChoices = std::array<TChoice, kChoiceCount>;

/// The name of the feature.
const wchar_t* ChoiceName(EChoice choice);
std::optional<EChoice> ChoiceOfName(std::wstring_view name);

} // namespace vxsim
