// SPDX-License-Identifier: MIT
// A user's program in C++: takes one image and fails when it is empty.
#include <vxmcd.h>

#include <algorithm>
#include <cstdio>
#include <vector>

int main()
{
  if (Initialize(nullptr) != RC_SUCCESS) return 1;
  int width = 0;
  int height = 0;
  unsigned int code = GetDetector(&width, &height);
  std::vector<unsigned short> image(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  if (code == RC_SUCCESS) code = SetAcquisitionMode(1);
  if (code == RC_SUCCESS) code = StartAcquisition();
  if (code == RC_SUCCESS) code = WaitForAcquisitionTimeOut(10000);
  if (code == RC_SUCCESS) code = GetMostRecentImage16(image.data(), image.size());
  ShutDown();
  const auto brightest = image.empty() ? image.end() : std::max_element(image.begin(), image.end());
  const int peak = brightest == image.end() ? 0 : *brightest;
  std::printf("%s, %d x %d pixels, brightest %d\n", vxmcd_GetResultName(static_cast<int>(code)), width, height,
              peak);
  return code == RC_SUCCESS && peak > 0 ? 0 : 1;
}
