// SPDX-License-Identifier: MIT
// The two outputs of the gain channel, as amplifiers.
#include "features/TPseudoAmplifier.h"

#include "features/feature_names.h"
#include "features/refused_access.h"
#include "features/value_texts.h"

#include <algorithm>

namespace {

constexpr int kLowGain = 0;
constexpr int kHighGain = 1;
constexpr int kAmplifiers = 2;

bool IsAmplifier(int amplifier)
{
  return IsIndexOf(kAmplifiers, amplifier, "amplifier");
}

} // namespace

TPseudoAmplifier::TPseudoAmplifier(IEnum* gainChannel, IEnum* readoutRate)
    : gainChannel_(gainChannel),
      readoutRate_(readoutRate),
      remembered_(PresentText(*gainChannel) == FeatureText::kHigh ? kHighGain : kLowGain)
{
}

int TPseudoAmplifier::Set(int amplifier)
{
  if (!IsAmplifier(amplifier)) return kNoSuchAmplifier;
  if (PresentText(*gainChannel_) != FeatureText::kBoth)
    gainChannel_->SetString(amplifier == kLowGain ? FeatureText::kLow : FeatureText::kHigh);
  remembered_ = amplifier;
  return kDone;
}

int TPseudoAmplifier::Get(int& amplifier)
{
  const std::wstring text = PresentText(*gainChannel_);
  if (text == FeatureText::kLow)
    amplifier = kLowGain;
  else if (text == FeatureText::kHigh)
    amplifier = kHighGain;
  else
    amplifier = remembered_;
  return kDone;
}

int TPseudoAmplifier::Count(int& count)
{
  count = kAmplifiers;
  return kDone;
}

int TPseudoAmplifier::Description(int amplifier, std::string& text)
{
  if (!IsAmplifier(amplifier)) return kNoSuchAmplifier;
  if (PresentText(*gainChannel_) == FeatureText::kBoth)
    text = "Dual Gain";
  else
    text = amplifier == kLowGain ? "Low Gain" : "High Gain";
  return kDone;
}

int TPseudoAmplifier::GetMaxSpeed(int amplifier, float& megahertz)
{
  if (!IsAmplifier(amplifier)) return kNoSuchAmplifier;
  float maximum = 0.0F;
  VisitTexts(*readoutRate_, [&](const std::wstring& text) { maximum = std::max(maximum, LeadingFloat(text)); });
  megahertz = maximum;
  return kDone;
}
