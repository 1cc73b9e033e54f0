// SPDX-License-Identifier: MIT
// The GenICam description of the test camera.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

/// Codes of the Pixel Format Naming Convention.
namespace Pfnc {

inline constexpr std::uint32_t kMono8 = 0x01080001;
inline constexpr std::uint32_t kMono10 = 0x01100003;
inline constexpr std::uint32_t kMono12 = 0x01100005;
inline constexpr std::uint32_t kMono12Packed = 0x010C0006;
inline constexpr std::uint32_t kMono12p = 0x010C0047;
inline constexpr std::uint32_t kMono14 = 0x01100025;
inline constexpr std::uint32_t kMono16 = 0x01100007;
inline constexpr std::uint32_t kRgb8 = 0x02180014;

} // namespace Pfnc

/// What a test camera has, and what is wrong with it.
struct TCameraTraits
{
  std::vector<std::string> formats = {"Mono8", "Mono12", "Mono12Packed", "Mono12p", "Mono16"};
  std::set<std::string> without; ///< names of features
  int increment = 1;             ///< of the image area
};

/// The description as GenICam XML. Its registers are those of the camera that Aravis simulates; what that one does not
/// know is memory that keeps what is written.
std::string CameraDescription(const TCameraTraits& traits);
