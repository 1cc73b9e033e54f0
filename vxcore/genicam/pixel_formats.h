// SPDX-License-Identifier: MIT
// The formats of pixels that cameras send, the encodings of images, and which images each format serves for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace vxgenicam {

/// Formats of the GenICam Pixel Format Naming Convention (PFNC) that can be read; numbers are its codes.
enum class EPixelFormat : std::uint32_t
{
  Mono8 = 0x01080001,
  Mono10 = 0x01100003, ///< 16 bits each, the value at the low end, little-endian; so are 12, 14 and 16
  Mono12 = 0x01100005,
  Mono14 = 0x01100025,
  Mono16 = 0x01100007,
  Mono12Packed = 0x010C0006, ///< GigE Vision: two pixels in three bytes A[11:4], B[3:0] A[3:0], B[11:4]
  Mono12p = 0x010C0047,      ///< PFNC: two pixels in three bytes A[7:0], B[3:0] A[11:8], B[11:4]
};

/// The texts of "PixelEncoding", in the order of their indices.
enum class EEncoding
{
  Mono8,
  Mono12,
  Mono12Packed,
  Mono16,
  Mono32, ///< sums, made on the host
};
inline constexpr int kEncodingCount = 5;

/// The name of a format in PFNC and in "PixelFormat": "Mono12p".
const char* NameOf(EPixelFormat format);
std::optional<EPixelFormat> PixelFormatOf(std::string_view name);
std::optional<EPixelFormat> PixelFormatOf(std::uint32_t code);

const wchar_t* NameOf(EEncoding encoding);
/// The formats that images of the encoding can be made from, the best first.
std::span<const EPixelFormat> SourcesOf(EEncoding encoding);
/// The greatest value of a pixel of the encoding.
std::uint32_t MaximumOf(EEncoding encoding);
/// Bytes from one row of an image to the next.
std::size_t StrideOf(EEncoding encoding, std::size_t width);

/// Bits that a pixel takes in a frame.
constexpr int BitsOf(EPixelFormat format)
{
  return static_cast<int>(static_cast<std::uint32_t>(format) >> 16 & 0xFF);
}

} // namespace vxgenicam
