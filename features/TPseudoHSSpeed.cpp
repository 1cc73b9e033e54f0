// SPDX-License-Identifier: MIT
// The pixel readout rates, as horizontal shift speeds.
#include "features/TPseudoHSSpeed.h"

#include "features/readout_interfaces.h"
#include "features/refused_access.h"
#include "features/value_texts.h"

TPseudoHSSpeed::TPseudoHSSpeed(IEnum* readoutRate, IADChannel* channel, IAmplifier* amplifier)
    : readoutRate_(readoutRate), channel_(channel), amplifier_(amplifier)
{
}

int TPseudoHSSpeed::Set(int amplifier, int speed)
{
  if (!IsAmplifier(amplifier)) return kNoSuchAmplifier;
  if (!IsSpeed(speed)) return kNoSuchSpeed;
  readoutRate_->SetIndex(speed);
  amplifier_->Set(amplifier);
  return kDone;
}

int TPseudoHSSpeed::Count(int channel, int amplifier, int& count)
{
  if (!IsChannel(channel)) return kNoSuchChannel;
  if (!IsAmplifier(amplifier)) return kNoSuchAmplifier;
  count = CountOf(*readoutRate_);
  return kDone;
}

int TPseudoHSSpeed::GetVal(int channel, int amplifier, int speed, float& megahertz)
{
  if (!IsChannel(channel)) return kNoSuchChannel;
  if (!IsAmplifier(amplifier)) return kNoSuchAmplifier;
  if (!IsSpeed(speed)) return kNoSuchSpeed;
  std::wstring text;
  if (readoutRate_->GetStringByIndex(speed, text) != VX_SUCCESS) text.clear();
  megahertz = LeadingFloat(text);
  return kDone;
}

bool TPseudoHSSpeed::IsChannel(int channel)
{
  int count = 0;
  return channel_->Count(count) == IADChannel::kDone && IsIndexOf(count, channel, "channel");
}

bool TPseudoHSSpeed::IsAmplifier(int amplifier)
{
  int count = 0;
  return amplifier_->Count(count) == IAmplifier::kDone && IsIndexOf(count, amplifier, "amplifier");
}

bool TPseudoHSSpeed::IsSpeed(int speed)
{
  return IsIndexOf(CountOf(*readoutRate_), speed, "speed");
}
