// SPDX-License-Identifier: MIT
// The gains of a camera that lists each of them.
#include "features/TDirectPreAmpGain.h"

#include "features/feature_names.h"
#include "features/readout_interfaces.h"
#include "features/refused_access.h"
#include "features/value_texts.h"

namespace {

constexpr int kGainsPerAmplifier = 2;
constexpr int kSpeeds = 4;

} // namespace

TDirectPreAmpGain::TDirectPreAmpGain(IEnum* gain, IEnum* selector, IADChannel* channel, IAmplifier* amplifier)
    : gain_(gain), selector_(selector), channel_(channel), amplifier_(amplifier)
{
}

int TDirectPreAmpGain::Set(int gain)
{
  if (!IsGain(gain)) return kNoSuchGain;
  selector_->SetString(gain < kGainsPerAmplifier ? FeatureText::kLow : FeatureText::kHigh);
  gain_->SetIndex(gain);
  return kDone;
}

int TDirectPreAmpGain::GetValue(int gain, float& value)
{
  std::wstring text;
  if (GetStringByIndex(gain, text) != kDone) return kNoSuchGain;
  value = LeadingFloat(text);
  return kDone;
}

int TDirectPreAmpGain::Count(int& count)
{
  gain_->GetCount(count);
  return kDone;
}

int TDirectPreAmpGain::IsAvailable(int channel, int amplifier, int speed, int gain, bool& available)
{
  available = false;
  int channels = 0;
  if (channel_->Count(channels) != IADChannel::kDone || !IsIndexOf(channels, channel, "channel"))
    return kNoSuchChannel;
  int amplifiers = 0;
  if (amplifier_->Count(amplifiers) != IAmplifier::kDone || !IsIndexOf(amplifiers, amplifier, "amplifier"))
    return kNoSuchAmplifier;
  if (!IsGain(gain)) return kNoSuchGain;
  if (!IsIndexOf(kSpeeds, speed, "speed")) return kNoSuchSpeed;
  available = amplifier == gain / kGainsPerAmplifier;
  return kDone;
}

int TDirectPreAmpGain::GetStringByIndex(int gain, std::wstring& text)
{
  if (!IsGain(gain)) return kNoSuchGain;
  if (gain_->GetStringByIndex(gain, text) != VX_SUCCESS) text.clear();
  return kDone;
}

bool TDirectPreAmpGain::IsGain(int gain)
{
  return IsIndexOf(CountOf(*gain_), gain, "gain");
}
