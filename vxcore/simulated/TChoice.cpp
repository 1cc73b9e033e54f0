// SPDX-License-Identifier: MIT
// Enumerated settings: the table of their names and of what their texts mean.
#include "vxcore/simulated/TChoice.h"

#include "vxcore/simulated/imaging/TFrameSettings.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace vxsim {

namespace {

/// The enumerator of a text, as a number.
using TMeaning = int (*)(std::wstring_view text);

template <typename Enum>
constexpr int Number(Enum value)
{
  return static_cast<int>(value);
}

int NoMeaning(std::wstring_view)
{
  return 0;
}

int LayoutOf(std::wstring_view text)
{
  return Number(text == L"Track" ? ELayout::Track : ELayout::Image);
}

int EncodingOf(std::wstring_view text)
{
  for (const EPixelEncoding encoding :
       {EPixelEncoding::Mono8, EPixelEncoding::Mono12, EPixelEncoding::Mono12Packed, EPixelEncoding::Mono16,
        EPixelEncoding::Mono32}) {
    if (std::ranges::equal(text, std::string_view(EncodingName(encoding)))) return Number(encoding);
  }
  return Number(EPixelEncoding::Mono16); // a made-up text
}

int CycleOf(std::wstring_view text)
{
  return Number(text == L"Continuous" ? ECycle::Continuous : ECycle::Fixed);
}

int TriggerOf(std::wstring_view text)
{
  constexpr std::pair<std::wstring_view, ETrigger> kTexts[] = {
      {L"Internal", ETrigger::Internal},
      {L"Software", ETrigger::Software},
      {L"External Start", ETrigger::ExternalStart},
      {L"External Exposure", ETrigger::ExternalExposure},
      {L"External Level Transition", ETrigger::ExternalLevelTransition}};
  for (const auto& [known, trigger] : kTexts) {
    if (text == known) return Number(trigger);
  }
  return Number(text.starts_with(L"External") ? ETrigger::External : ETrigger::Unknown);
}

int EdgesOf(std::wstring_view text)
{
  return Number(text == L"Falling" ? EEdges::Falling : text == L"Both" ? EEdges::Both : EEdges::Rising);
}

int ShutterOf(std::wstring_view text)
{
  if (text == L"Global") return Number(EShutter::Global);
  return Number(text.find(L"Rolling") != std::wstring_view::npos ? EShutter::Rolling : EShutter::Unknown);
}

int GainChannelsOf(std::wstring_view text)
{
  return Number(text == L"Both" ? EGainChannels::Both : EGainChannels::One);
}

int FifoBitsOf(std::wstring_view text)
{
  return Number(text.find(L"11-bit") != std::wstring_view::npos ? EFifoBits::Eleven : EFifoBits::Other);
}

int FanOf(std::wstring_view text)
{
  return Number(text == L"Off" ? EFan::Off : text == L"Low" ? EFan::Low : EFan::On);
}

struct TRow
{
  EChoice choice;
  const wchar_t* name;
  TMeaning meaning;
};

constexpr TRow kRows[] = {
    {EChoice::AoiLayout, L"AOILayout", LayoutOf},
    {EChoice::AoiBinning, L"AOIBinning", NoMeaning},
    {EChoice::PixelEncoding, L"PixelEncoding", EncodingOf},
    {EChoice::CycleMode, L"CycleMode", CycleOf},
    {EChoice::TriggerMode, L"TriggerMode", TriggerOf},
    {EChoice::TriggerConfiguration, L"TriggerConfiguration", EdgesOf},
    {EChoice::ShutteringMode, L"ElectronicShutteringMode", ShutterOf},
    {EChoice::PixelReadoutRate, L"PixelReadoutRate", NoMeaning},
    {EChoice::PreAmpGainChannel, L"PreAmpGainChannel", GainChannelsOf},
    {EChoice::PreAmpGainSelector, L"PreAmpGainSelector", NoMeaning},
    {EChoice::PreAmpGain, L"PreAmpGain", NoMeaning},
    {EChoice::SimplePreAmpGainControl, L"SimplePreAmpGainControl", FifoBitsOf},
    {EChoice::BitDepth, L"BitDepth", NoMeaning},
    {EChoice::FanSpeed, L"FanSpeed", FanOf},
    {EChoice::TemperatureStatus, L"TemperatureStatus", NoMeaning},
};

constexpr bool HasEveryChoiceInOrder()
{
  for (size_t i = 0; i < std::size(kRows); ++i) {
    if (kRows[i].choice != static_cast<EChoice>(i)) return false;
  }
  return std::size(kRows) == kChoiceCount;
}
static_assert(HasEveryChoiceInOrder());

} // namespace

void TChoice::SetTexts(EChoice choice, std::vector<std::wstring> texts)
{
  texts_ = std::move(texts);
  meanings_.clear();
  for (const std::wstring& text : texts_) meanings_.push_back(kRows[static_cast<size_t>(choice)].meaning(text));
}

int TChoice::Find(std::wstring_view text) const
{
  const auto found = std::ranges::find(texts_, text);
  return found == texts_.end() ? -1 : static_cast<int>(found - texts_.begin());
}

const wchar_t* ChoiceName(EChoice choice)
{
  return kRows[static_cast<size_t>(choice)].name;
}

std::optional<EChoice> ChoiceOfName(std::wstring_view name)
{
  const auto* row = std::ranges::find_if(kRows, [name](const TRow& one) { return name == one.name; });
  return row == std::end(kRows) ? std::nullopt : std::optional(row->choice);
}

} // namespace vxsim
