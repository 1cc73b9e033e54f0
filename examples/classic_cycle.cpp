// SPDX-License-Identifier: MIT
// The classic cycle in C++11: takes the newest image of a continuous run again and again, until there were enough.
#include "vxmcd.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr long kImages = 20;
constexpr int kWaitMs = 200;
constexpr int kReadModeImage = 4;
constexpr int kTriggerInternal = 0;
constexpr int kRunTillAbort = 5;

void Check(const char* function, unsigned int code)
{
  if (code == RC_SUCCESS) return;
  throw std::runtime_error(std::string(function) + ": " + vxmcd_GetResultName(code) + ": " +
                           vxmcd_GetResultMeaning(code));
}

// An open camera. Closing it also ends a run.
class Camera
{
public:
  Camera() { Check("Initialize", Initialize(nullptr)); }
  ~Camera() { ShutDown(); }
  Camera(const Camera&) = delete;
  Camera& operator=(const Camera&) = delete;
};

void WatchRun(std::vector<unsigned short>& pixels)
{
  long count = 0;
  long looks = 0;
  Check("StartAcquisition", StartAcquisition());
  while (count < kImages) {
    const unsigned int waited = WaitForAcquisitionTimeOut(kWaitMs);
    int status = 0;
    Check("GetStatus", GetStatus(&status));
    if (status != static_cast<int>(RC_ACQUIRING)) Check("the run", static_cast<unsigned int>(status));
    if (waited != RC_SUCCESS) continue;
    Check("GetMostRecentImage16", GetMostRecentImage16(pixels.data(), pixels.size()));
    Check("GetTotalNumberImagesAcquired", GetTotalNumberImagesAcquired(&count));
    ++looks;
  }
  Check("AbortAcquisition", AbortAcquisition());
  const auto range = std::minmax_element(pixels.begin(), pixels.end());
  std::cout << count << " images acquired, " << looks << " looked at, levels of the last: " << *range.first
            << " to " << *range.second << '\n';
}

} // namespace

int main()
{
  try {
    const Camera camera;
    Check("SetReadMode", SetReadMode(kReadModeImage));
    Check("SetTriggerMode", SetTriggerMode(kTriggerInternal));
    Check("SetAcquisitionMode", SetAcquisitionMode(kRunTillAbort));
    Check("SetExposureTime", SetExposureTime(0.01F));
    int width = 0;
    int height = 0;
    Check("GetDetector", GetDetector(&width, &height));
    std::vector<unsigned short> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    WatchRun(pixels);
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
