// SPDX-License-Identifier: MIT
// What checks do with a camera before they look: settings that are alike for all, and runs.
#pragma once

#include "tools/check/TCheckContext.h"

#include <string>
#include <vector>

namespace vxtool {

enum class RunKind : int // the library's acquisition modes
{
  Series = 3,
  UntilAborted = 5,
};

/// Pixels of an image.
struct TImageSize
{
  int width = 0;
  int height = 0;

  unsigned long Pixels() const { return static_cast<unsigned long>(width) * static_cast<unsigned long>(height); }
  std::string Text() const { return std::to_string(width) + " x " + std::to_string(height); }
};

/// Opens the camera if it is closed, and makes small images, unbinned, with a short exposure, as fast as it can.
void MakeReady(TCheckContext& check);
/// Whether the camera says that it acquires, which the library above need not know.
bool IsAcquiring(TCheckContext& check);
/// Pixels of the sensor.
TImageSize Sensor(TCheckContext& check);
/// The image area in force, as the camera has it.
TImageSize ImageSize(TCheckContext& check);
/// Sets an area without binning that begins at a pixel, from 1.
unsigned int SetPart(TCheckContext& check, int left, int top, TImageSize size);
/// The time from one image to the next.
double CycleSeconds(TCheckContext& check);
int Status(TCheckContext& check);
long TotalImages(TCheckContext& check);

/// Starts a run; ends the check when the camera does not.
void StartRun(TCheckContext& check, RunKind kind, int images = 1);
/// Waits for so many images of the run since its start, at most as long as they may take. False when they do not come.
bool WaitForImages(TCheckContext& check, long images);
/// After a run, makes the waits that its images end at once since no thread had waited for them: later ones last.
void UseUpWaits(TCheckContext& check);
/// Waits until the run ends by itself, at most as long as it may take. False when it does not end.
bool WaitUntilIdle(TCheckContext& check, long images);
/// Takes a series; ends the check when it is not complete.
void TakeSeries(TCheckContext& check, int images);
/// An image of the present or last run, with 16 bits a pixel; ends the check when there is none.
std::vector<unsigned short> Image(TCheckContext& check, long number);
/// Clock values of the last images of the last run, in ticks; 0 for images without one.
std::vector<long long> Ticks(TCheckContext& check, long images);

/// Sets an encoding for its lifetime.
class TEncoding final
{
public:
  TEncoding(TCheckContext& check, const wchar_t* encoding);
  ~TEncoding();
  TEncoding(const TEncoding&) = delete;
  TEncoding& operator=(const TEncoding&) = delete;
  bool IsSet() const { return isSet_; }

private:
  int handle_;
  std::wstring before_;
  bool isSet_ = false;
};

} // namespace vxtool
