// SPDX-License-Identifier: MIT
// The readout channel: AD channels, amplifiers, speeds and gains by index, baseline clamp, fill of the memory.
#include "api/TCameraUse.h"
#include "features/feature_access.h"
#include "features/readout_interfaces.h"
#include "features/TgetFIFOUsage.h"
#include "features/TPseudoADChannel.h"
#include "features/TPseudoAmplifier.h"
#include "features/TPseudoBaselineClamp.h"
#include "features/TPseudoHSSpeed.h"
#include "utility/TAutoQuorinCriticalSection.h"
#include "utility/TQuorinCriticalSection.h"
#include "utility/TQuorinMisc.h"

#include <cstring>

namespace {

template <class T>
void Write(T* output, T value)
{
  if (output) *output = value;
}

// Ends the text in front of its first bracket, together with the character before that, usually a space.
void CutAtBracket(char* text)
{
  if (text[0] == '\0') return;
  char* const bracket = std::strchr(text + 1, '(');
  if (bracket) bracket[-1] = '\0';
}

} // namespace

// The AD channel functions answer success without a camera, unlike all others; callers rely on it.
unsigned int SetADChannel(int channel)
{
  const TCameraUse camera;
  if (!camera) return RC_SUCCESS;
  return camera.ADChannel().Set(channel) == IADChannel::kNoSuchChannel ? RC_P1_INVALID : RC_SUCCESS;
}

unsigned int GetNumberADChannels(int* count)
{
  const TCameraUse camera;
  if (!camera) return RC_SUCCESS;
  int channels = 0;
  camera.ADChannel().Count(channels);
  Write(count, channels);
  return RC_SUCCESS;
}

unsigned int GetBitDepth(int channel, int* depth)
{
  const TCameraUse camera;
  if (!camera) return RC_SUCCESS;
  if (!depth) return RC_P2_INVALID;
  return camera.ADChannel().BitDepth(channel, *depth) == IADChannel::kNoSuchChannel ? RC_P1_INVALID : RC_SUCCESS;
}

unsigned int SetOutputAmplifier(int amplifier)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return camera.Amplifier().Set(amplifier) == IAmplifier::kNoSuchAmplifier ? RC_P1_INVALID : RC_SUCCESS;
}

unsigned int GetNumberAmp(int* count)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  int amplifiers = 0;
  camera.Amplifier().Count(amplifiers);
  Write(count, amplifiers);
  return RC_SUCCESS;
}

unsigned int IsAmplifierAvailable(int amplifier)
{
  int count = 0;
  if (const unsigned int code = GetNumberAmp(&count); code != RC_SUCCESS) return code;
  return amplifier >= 0 && amplifier < count ? RC_SUCCESS : RC_INVALID_AMPLIFIER;
}

unsigned int GetAmpDesc(int amplifier, char* text, int length)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  std::string description;
  if (camera.Amplifier().Description(amplifier, description) == IAmplifier::kNoSuchAmplifier) return RC_P1_INVALID;
  // The byte at length - 1 stays the caller's, so a text that is cut ends there only if the caller cleared it.
  if (text && length > 0) std::strncpy(text, description.c_str(), static_cast<std::size_t>(length) - 1);
  return RC_SUCCESS;
}

unsigned int GetAmpMaxSpeed(int amplifier, float* megahertz)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  float speed = 0.0F;
  if (camera.Amplifier().GetMaxSpeed(amplifier, speed) == IAmplifier::kNoSuchAmplifier) return RC_P1_INVALID;
  Write(megahertz, speed);
  return RC_SUCCESS;
}

unsigned int SetHSSpeed(int amplifier, int speed)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  switch (camera.HSSpeed().Set(amplifier, speed)) {
  case IHSSpeed::kNoSuchAmplifier:
    return RC_P1_INVALID;
  case IHSSpeed::kNoSuchSpeed:
    return RC_P2_INVALID;
  default:
    return RC_SUCCESS;
  }
}

unsigned int GetNumberHSSpeeds(int channel, int amplifier, int* count)
{
  Write(count, 0);
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  int speeds = 0;
  switch (camera.HSSpeed().Count(channel, amplifier, speeds)) {
  case IHSSpeed::kNoSuchChannel:
    return RC_P1_INVALID;
  case IHSSpeed::kNoSuchAmplifier:
    return RC_P2_INVALID;
  default:
    Write(count, speeds);
    return RC_SUCCESS;
  }
}

unsigned int GetHSSpeed(int channel, int amplifier, int speed, float* megahertz)
{
  Write(megahertz, 1.0F);
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  float value = 1.0F;
  switch (camera.HSSpeed().GetVal(channel, amplifier, speed, value)) {
  case IHSSpeed::kNoSuchChannel:
    return RC_P1_INVALID;
  case IHSSpeed::kNoSuchAmplifier:
    return RC_P2_INVALID;
  case IHSSpeed::kNoSuchSpeed:
    return RC_P3_INVALID;
  default:
    Write(megahertz, value);
    return RC_SUCCESS;
  }
}

unsigned int SetPreAmpGain(int gain)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return camera.PreAmpGain().Set(gain) == IPreAmpGain::kNoSuchGain ? RC_P1_INVALID : RC_SUCCESS;
}

unsigned int GetNumberPreAmpGains(int* count)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (count) camera.PreAmpGain().Count(*count);
  return RC_SUCCESS;
}

unsigned int GetPreAmpGain(int gain, float* value)
{
  Write(value, 0.0F);
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  float factor = 0.0F;
  if (camera.PreAmpGain().GetValue(gain, factor) == IPreAmpGain::kNoSuchGain) return RC_P1_INVALID;
  Write(value, factor);
  return RC_SUCCESS;
}

unsigned int IsPreAmpGainAvailable(int channel, int amplifier, int speed, int gain, int* status)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  bool available = false;
  switch (camera.PreAmpGain().IsAvailable(channel, amplifier, speed, gain, available)) {
  case IPreAmpGain::kNoSuchChannel:
    return RC_P1_INVALID;
  case IPreAmpGain::kNoSuchAmplifier:
    return RC_P2_INVALID;
  case IPreAmpGain::kNoSuchSpeed:
    return RC_P3_INVALID;
  case IPreAmpGain::kNoSuchGain:
    return RC_P4_INVALID;
  default:
    Write(status, available ? 1 : 0);
    return RC_SUCCESS;
  }
}

unsigned int GetPreAmpGainText(int gain, char* text, int length)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  std::wstring name;
  if (camera.PreAmpGain().GetStringByIndex(gain, name) == IPreAmpGain::kNoSuchGain) return RC_P1_INVALID;
  if (!text) return RC_P2_INVALID;
  if (length <= 0) return RC_SUCCESS;
  QuorinUtility::TQuorinMisc::snprintf(text, static_cast<std::size_t>(length), "%ls", name.c_str());
  CutAtBracket(text);
  return RC_SUCCESS;
}

unsigned int SetBaselineClamp(int state)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (state != 0 && state != 1) return RC_P1_INVALID;
  switch (camera.BaselineClamp().Set(state == 1)) {
  case TPseudoBaselineClamp::kDone:
    return RC_SUCCESS;
  case TPseudoBaselineClamp::kNotAvailableNow:
    return RC_NOT_AVAILABLE;
  case TPseudoBaselineClamp::kNotImplemented:
    return RC_NOT_SUPPORTED;
  default:
    return RC_P1_INVALID;
  }
}

unsigned int GetBaselineClamp(int* state)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  bool isOn = false;
  switch (camera.BaselineClamp().Get(isOn)) {
  case TPseudoBaselineClamp::kDone:
    Write(state, isOn ? 1 : 0);
    return RC_SUCCESS;
  case TPseudoBaselineClamp::kNotAvailableNow:
    return RC_NOT_AVAILABLE;
  case TPseudoBaselineClamp::kNotImplemented:
    return RC_NOT_SUPPORTED;
  default:
    return RC_P1_INVALID;
  }
}

unsigned int GetFIFOUsage(int* percent)
{
  if (IsForkedChild()) return RC_NOT_INITIALIZED;
  // The camera stays open between the register reads, and only one thread at a time makes them.
  const QuorinUtility::TAutoQuorinCriticalSection lock(&currentCameraShutdownMutex.object);
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!percent) return RC_P1_INVALID;
  return camera.FIFOUsage().GetInt(*percent) == VX_SUCCESS ? RC_SUCCESS : RC_NOT_SUPPORTED;
}
