// SPDX-License-Identifier: MIT
// The readout channel: AD channels, amplifiers, speeds and gains by index, baseline clamp, fill of the memory.
#include "api/call_log.h"
#include "api/entry_points.h"
#include "api/result_maps.h"
#include "api/TCameraUse.h"
#include "api/TClosingTurn.h"
#include "features/refused_access.h"
#include "features/TgetFIFOUsage.h"
#include "features/TPseudoADChannel.h"
#include "features/TPseudoAmplifier.h"
#include "features/TPseudoHSSpeed.h"
#include "utility/outputs.h"
#include "utility/TQuorinMisc.h"

#include <cstring>

namespace EntryPoint {

namespace {

// Cuts the text before its first bracket and removes the character in front of it, usually a space.
void CutAtBracket(char* text)
{
  if (text[0] == '\0') return;
  char* const bracket = std::strchr(text + 1, '(');
  if (bracket) bracket[-1] = '\0';
}

} // namespace

// Unlike all others, the AD channel functions return success without a camera; callers rely on it.
unsigned int SetADChannel(int channel)
{
  const TCameraUse camera;
  if (!camera) return RC_SUCCESS;
  return ToResultCode(camera.ADChannel().Set(channel), ResultMap::kChannel);
}

unsigned int GetNumberADChannels(int* count)
{
  const TCameraUse camera;
  if (!camera) return RC_SUCCESS;
  int channels = 0;
  camera.ADChannel().Count(channels);
  WriteOutput(count, channels);
  return RC_SUCCESS;
}

unsigned int GetBitDepth(int channel, int* depth)
{
  const TCameraUse camera;
  if (!camera) return RC_SUCCESS;
  if (!depth) return RC_P2_INVALID;
  return ToResultCode(camera.ADChannel().BitDepth(channel, *depth), ResultMap::kChannel);
}

unsigned int SetOutputAmplifier(int amplifier)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return ToResultCode(camera.Amplifier().Set(amplifier), ResultMap::kAmplifier);
}

unsigned int GetNumberAmp(int* count)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  int amplifiers = 0;
  camera.Amplifier().Count(amplifiers);
  WriteOutput(count, amplifiers);
  return RC_SUCCESS;
}

unsigned int IsAmplifierAvailable(int amplifier)
{
  int count = 0;
  if (const unsigned int code = GetNumberAmp(&count); code != RC_SUCCESS) return code;
  return IsIndexOf(count, amplifier, "amplifier") ? RC_SUCCESS : RC_INVALID_AMPLIFIER;
}

unsigned int GetAmpDesc(int amplifier, char* text, int length)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  std::string description;
  const int status = camera.Amplifier().Description(amplifier, description);
  if (status != IAmplifier::kDone) return ToResultCode(status, ResultMap::kAmplifier);
  // The byte at length - 1 is not written, so a text that is cut ends there only if the caller cleared it.
  if (text && length > 0) std::strncpy(text, description.c_str(), static_cast<std::size_t>(length) - 1);
  return RC_SUCCESS;
}

unsigned int GetAmpMaxSpeed(int amplifier, float* megahertz)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  float speed = 0.0F;
  const unsigned int code = ToResultCode(camera.Amplifier().GetMaxSpeed(amplifier, speed), ResultMap::kAmplifier);
  if (code == RC_SUCCESS) WriteOutput(megahertz, speed);
  return code;
}

unsigned int SetHSSpeed(int amplifier, int speed)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return ToResultCode(camera.HSSpeed().Set(amplifier, speed), ResultMap::kSetSpeed);
}

unsigned int GetNumberHSSpeeds(int channel, int amplifier, int* count)
{
  WriteOutput(count, 0);
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  int speeds = 0;
  const unsigned int code = ToResultCode(camera.HSSpeed().Count(channel, amplifier, speeds), ResultMap::kGetSpeed);
  if (code == RC_SUCCESS) WriteOutput(count, speeds);
  return code;
}

unsigned int GetHSSpeed(int channel, int amplifier, int speed, float* megahertz)
{
  WriteOutput(megahertz, 1.0F);
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  float value = 1.0F;
  const unsigned int code =
      ToResultCode(camera.HSSpeed().GetVal(channel, amplifier, speed, value), ResultMap::kGetSpeed);
  if (code == RC_SUCCESS) WriteOutput(megahertz, value);
  return code;
}

unsigned int SetPreAmpGain(int gain)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return ToResultCode(camera.PreAmpGain().Set(gain), ResultMap::kGain);
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
  WriteOutput(value, 0.0F);
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  float factor = 0.0F;
  const unsigned int code = ToResultCode(camera.PreAmpGain().GetValue(gain, factor), ResultMap::kGain);
  if (code == RC_SUCCESS) WriteOutput(value, factor);
  return code;
}

unsigned int IsPreAmpGainAvailable(int channel, int amplifier, int speed, int gain, int* status)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  bool available = false;
  const unsigned int code = ToResultCode(
      camera.PreAmpGain().IsAvailable(channel, amplifier, speed, gain, available), ResultMap::kGainAvailable);
  if (code == RC_SUCCESS) WriteOutput(status, available ? 1 : 0);
  return code;
}

unsigned int GetPreAmpGainText(int gain, char* text, int length)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  std::wstring name;
  const int status = camera.PreAmpGain().GetStringByIndex(gain, name);
  if (status != IPreAmpGain::kDone) return ToResultCode(status, ResultMap::kGain);
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
  if (state != 0 && state != 1) return Refuse(RC_P1_INVALID, "the states are 0 and 1");
  return ToResultCode(camera.BaselineClamp().Set(state == 1), ResultMap::kBaselineClamp);
}

unsigned int GetBaselineClamp(int* state)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  bool isOn = false;
  const unsigned int code = ToResultCode(camera.BaselineClamp().Get(isOn), ResultMap::kBaselineClamp);
  if (code == RC_SUCCESS) WriteOutput(state, isOn ? 1 : 0);
  return code;
}

unsigned int GetFIFOUsage(int* percent)
{
  if (IsForkedChild()) return RC_NOT_INITIALIZED;
  // One thread at a time reads the registers, and the camera stays open between the reads.
  const long handle = CurrentCameraHandle();
  const TClosingTurn turn(handle);
  const TCameraUse camera(handle);
  if (!turn || !camera) return RC_NOT_INITIALIZED;
  if (!percent) return RC_P1_INVALID;
  return ToResultCode(camera.FIFOUsage().GetInt(*percent), RC_NOT_SUPPORTED);
}

} // namespace EntryPoint
