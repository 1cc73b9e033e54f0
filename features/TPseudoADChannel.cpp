// SPDX-License-Identifier: MIT
// The gain channel, as AD channels.
#include "features/TPseudoADChannel.h"

#include "features/feature_names.h"
#include "features/readout_interfaces.h"
#include "features/refused_access.h"
#include "features/value_texts.h"
#include "utility/TQuorinMisc.h"

#include <cstdlib>

namespace {

constexpr int kSingle = 0;
constexpr int kCombined = 1;

} // namespace

TPseudoADChannel::TPseudoADChannel(IEnum* gainChannel, IAmplifier* amplifier, IEnum* bitDepth)
    : gainChannel_(gainChannel), amplifier_(amplifier), bitDepth_(bitDepth)
{
}

int TPseudoADChannel::Get(int& channel)
{
  channel = PresentText(*gainChannel_) == FeatureText::kBoth ? kCombined : kSingle;
  return kDone;
}

int TPseudoADChannel::Set(int channel)
{
  if (!IsChannel(channel)) return kNoSuchChannel;
  if (channel == kCombined) {
    gainChannel_->SetString(FeatureText::kBoth);
    return kDone;
  }
  int amplifier = 0;
  amplifier_->Get(amplifier);
  gainChannel_->SetString(amplifier == 0 ? FeatureText::kLow : FeatureText::kHigh);
  return kDone;
}

int TPseudoADChannel::Count(int& count)
{
  bool canReadBoth = false;
  VisitTexts(*gainChannel_, [&](const std::wstring& text) { canReadBoth |= text == FeatureText::kBoth; });
  count = canReadBoth ? 2 : 1;
  return kDone;
}

int TPseudoADChannel::BitDepth(int channel, int& depth)
{
  if (!IsChannel(channel)) return kNoSuchChannel;
  std::wstring text;
  if (bitDepth_->GetStringByIndex(channel, text) != VX_SUCCESS) text.clear();
  char digits[20] = {};
  QuorinUtility::TQuorinMisc::snprintf(digits, sizeof digits, "%ls", text.c_str());
  depth = static_cast<int>(std::strtol(digits, nullptr, 10));
  return kDone;
}

bool TPseudoADChannel::IsChannel(int channel)
{
  int count = 0;
  return Count(count) == kDone && IsIndexOf(count, channel, "channel");
}
