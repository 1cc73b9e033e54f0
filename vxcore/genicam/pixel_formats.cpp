// SPDX-License-Identifier: MIT
// Tables of pixel layouts and encodings.
#include "vxcore/genicam/pixel_formats.h"

#include <algorithm>
#include <array>

namespace vxgenicam {

namespace {

struct TWireRow
{
  EWireFormat format;
  const char* name;
};
constexpr TWireRow kWireRows[] = {
    {EWireFormat::Mono8, "Mono8"},     {EWireFormat::Mono10, "Mono10"},
    {EWireFormat::Mono12, "Mono12"},   {EWireFormat::Mono14, "Mono14"},
    {EWireFormat::Mono16, "Mono16"},   {EWireFormat::Mono12Packed, "Mono12Packed"},
    {EWireFormat::Mono12p, "Mono12p"},
};

// Mono16 takes narrower values as they are; sums are made of the widest pixels that there are.
using enum EWireFormat;
constexpr EWireFormat kSourcesOf8[] = {Mono8};
constexpr EWireFormat kSourcesOf12[] = {Mono12, Mono12p, Mono12Packed};
constexpr EWireFormat kSourcesOf12Packed[] = {Mono12Packed, Mono12p, Mono12};
constexpr EWireFormat kSourcesOf16[] = {Mono16, Mono14, Mono10};
constexpr EWireFormat kSourcesOfSums[] = {Mono16, Mono14, Mono12, Mono12p, Mono12Packed, Mono10, Mono8};

struct TEncodingRow
{
  const wchar_t* name;
  std::uint32_t maximum;
  std::span<const EWireFormat> sources;
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

const char* NameOf(EWireFormat format)
{
  return std::ranges::find(kWireRows, format, &TWireRow::format)->name;
}

std::optional<EWireFormat> WireFormatOf(std::string_view name)
{
  for (const TWireRow& row : kWireRows)
    if (row.name == name) return row.format;
  return std::nullopt;
}

std::optional<EWireFormat> WireFormatOf(std::uint32_t code)
{
  for (const TWireRow& row : kWireRows)
    if (static_cast<std::uint32_t>(row.format) == code) return row.format;
  return std::nullopt;
}

const wchar_t* NameOf(EEncoding encoding)
{
  return RowOf(encoding).name;
}

std::span<const EWireFormat> SourcesOf(EEncoding encoding)
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
