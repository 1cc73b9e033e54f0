// SPDX-License-Identifier: MIT
// The gains of a camera with one simple gain control.
#include "features/TPseudoPreAmpGain.h"

#include "features/feature_interfaces.h"
#include "vxcore.h"

namespace {

constexpr unsigned int kChannels = 2;
constexpr unsigned int kAmplifiers = 2;
constexpr unsigned int kSpeeds = 4;
constexpr unsigned int kGains = 3;
constexpr int kCombinedGain = 2;

// Negative indices are large ones here.
bool IsBelow(int index, unsigned int limit)
{
  return static_cast<unsigned int>(index) < limit;
}

} // namespace

TPseudoPreAmpGain::TPseudoPreAmpGain(IEnum* simpleGain) : simpleGain_(simpleGain) {}

int TPseudoPreAmpGain::Set(int gain)
{
  simpleGain_->SetIndex(gain);
  return kDone;
}

int TPseudoPreAmpGain::GetValue(int gain, float& value)
{
  if (!IsBelow(gain, kGains)) return kNoSuchGain;
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
  if (!IsBelow(channel, kChannels)) return kNoSuchChannel;
  if (!IsBelow(amplifier, kAmplifiers)) return kNoSuchAmplifier;
  if (!IsBelow(speed, kSpeeds)) return kNoSuchSpeed;
  if (!IsBelow(gain, kGains)) return kNoSuchGain;
  available = gain == kCombinedGain ? channel == 1 : channel == 0 && amplifier == gain;
  return kDone;
}

int TPseudoPreAmpGain::GetStringByIndex(int gain, std::wstring& text)
{
  if (!IsBelow(gain, kGains)) return kNoSuchGain;
  return simpleGain_->GetStringByIndex(gain, text) == VX_SUCCESS ? kDone : kNoSuchGain;
}
