// SPDX-License-Identifier: MIT
// The gains of a camera with one simple gain control.
#include "features/TPseudoPreAmpGain.h"

#include "features/feature_interfaces.h"
#include "features/refused_access.h"
#include "vxcore.h"

namespace {

constexpr int kChannels = 2;
constexpr int kAmplifiers = 2;
constexpr int kSpeeds = 4;
constexpr int kGains = 3;
constexpr int kCombinedGain = 2;

} // namespace

TPseudoPreAmpGain::TPseudoPreAmpGain(IEnum* simpleGain) : simpleGain_(simpleGain) {}

int TPseudoPreAmpGain::Set(int gain)
{
  simpleGain_->SetIndex(gain);
  return kDone;
}

int TPseudoPreAmpGain::GetValue(int gain, float& value)
{
  if (!IsIndexOf(kGains, gain, "gain")) return kNoSuchGain;
  value = static_cast<float>(gain + 1);
  return kDone;
}

int TPseudoPreAmpGain::Count(int& count)
{
  simpleGain_->GetCount(count);
  return kDone;
}

int TPseudoPreAmpGain::IsAvailable(int channel, int amplifier, int speed, int gain, bool& available)
{
  available = false;
  if (!IsIndexOf(kChannels, channel, "channel")) return kNoSuchChannel;
  if (!IsIndexOf(kAmplifiers, amplifier, "amplifier")) return kNoSuchAmplifier;
  if (!IsIndexOf(kSpeeds, speed, "speed")) return kNoSuchSpeed;
  if (!IsIndexOf(kGains, gain, "gain")) return kNoSuchGain;
  available = gain == kCombinedGain ? channel == 1 : channel == 0 && amplifier == gain;
  return kDone;
}

int TPseudoPreAmpGain::GetStringByIndex(int gain, std::wstring& text)
{
  if (!IsIndexOf(kGains, gain, "gain")) return kNoSuchGain;
  return simpleGain_->GetStringByIndex(gain, text) == VX_SUCCESS ? kDone : kNoSuchGain;
}
