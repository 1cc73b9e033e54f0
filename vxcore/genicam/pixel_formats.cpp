// SPDX-License-Identifier: MIT
// Tables of pixel formats and encodings.
#include "vxcore/genicam/pixel_formats.h"

#include <algorithm>
#include <array>

namespace vxgenicam {

namespace {

struct TFormatRow
{
  EPixelFormat format;
  const char* name;
};
constexpr TFormatRow kFormatRows[] = {
    {EPixelFormat::Mono8, "Mono8"},     {EPixelFormat::Mono10, "Mono10"},
    {EPixelFormat::Mono12, "Mono12"},   {EPixelFormat::Mono14, "Mono14"},
    {EPixelFormat::Mono16, "Mono16"},   {EPixelFormat::Mono12Packed, "Mono12Packed"},
    {EPixelFormat::Mono12p, "Mono12p"},
};

// Mono16 takes narrower values as they are; sums are made of the widest pixels that there are.
using enum EPixelFormat;
constexpr EPixelFormat kSourcesOf8[] = {Mono8};
constexpr EPixelFormat kSourcesOf12[] = {Mono12, Mono12p, Mono12Packed};
constexpr EPixelFormat kSourcesOf12Packed[] = {Mono12Packed, Mono12p, Mono12};
constexpr EPixelFormat kSourcesOf16[] = {Mono16, Mono14, Mono10};
constexpr EPixelFormat kSourcesOfSums[] = {Mono16, Mono14, Mono12, Mono12p, Mono12Packed, Mono10, Mono8};

struct TEncodingRow
{
  const wchar_t* name;
  std::uint32_t maximum;
  std::span<const EPixelFormat> sources;
};
constexpr std::array<TEncodingRow, kEncodingCount> kEncodingRows = {{
    {L"Mono8", 0xFF, kSourcesOf8},
    {L"Mono12", 0xFFF, kSourcesOf12},
    {L"Mono12Packed", 0xFFF, kSourcesOf12Packed},
    {L"Mono16", 0xFFFF, kSourcesOf16},
    {L"Mono32", 0x7FFF'FFFF, kSourcesOfSums}, // read as `int`
}};

const TEncodingRow& RowOf(EEncoding encoding)
{
  return kEncodingRows[static_cast<std::size_t>(encoding)];
}

} // namespace

const char* NameOf(EPixelFormat format)
{
  return std::ranges::find(kFormatRows, format, &TFormatRow::format)->name;
}

std::optional<EPixelFormat> PixelFormatOf(std::string_view name)
{
  for (const TFormatRow& row : kFormatRows)
    if (row.name == name) return row.format;
  return std::nullopt;
}

std::optional<EPixelFormat> PixelFormatOf(std::uint32_t code)
{
  for (const TFormatRow& row : kFormatRows)
    if (static_cast<std::uint32_t>(row.format) == code) return row.format;
  return std::nullopt;
}

const wchar_t* NameOf(EEncoding encoding)
{
  return RowOf(encoding).name;
}

std::span<const EPixelFormat> SourcesOf(EEncoding encoding)
{
  return RowOf(encoding).sources;
}

std::uint32_t MaximumOf(EEncoding encoding)
{
  return RowOf(encoding).maximum;
}

std::size_t StrideOf(EEncoding encoding, std::size_t width)
{
  switch (encoding) {
  case EEncoding::Mono8:
    return width;
  case EEncoding::Mono12Packed:
    return (3 * width + 1) / 2;
  case EEncoding::Mono32:
    return 4 * width;
  default:
    return 2 * width;
  }
}

} // namespace vxgenicam
