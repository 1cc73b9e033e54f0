// SPDX-License-Identifier: MIT
// Images and facts that the tests of the tool share.
#pragma once

#include "tools/IImageWriter.h"

#include <cstring>
#include <gtest/gtest.h>
#include <vector>

namespace vxtool {

/// An image whose pixels show its number and their place: number x 1000 + index, cut to the pixel's depth.
inline std::vector<std::byte> TestImage(const TImageShape& shape, long number)
{
  std::vector<std::byte> bytes(shape.Bytes());
  for (std::size_t index = 0; index < shape.Pixels(); ++index) {
    const auto value = static_cast<unsigned int>(static_cast<std::size_t>(number) * 1000 + index);
    std::memcpy(bytes.data() + index * shape.BytesPerPixel(), &value,
                shape.BytesPerPixel()); // little-endian hosts
  }
  return bytes;
}

inline TRunFacts TestFacts(long plannedImages)
{
  TRunFacts facts;
  facts.software = "vxmcd tool test";
  facts.camera = "camera of the test";
  facts.startUtc = "2026-01-31T12:34:56.789";
  facts.trigger = "internal";
  facts.exposureSeconds = 0.01;
  facts.cycleSeconds = 0.02;
  facts.plannedImages = plannedImages;
  return facts;
}

/// Keeps what it is given.
class KeepingWriter : public IImageWriter
{
public:
  std::vector<std::vector<std::byte>> images;
  std::vector<TImageLabel> labels;

  bool Open(const std::string&, bool, const TImageShape&, const TRunFacts&) override { return true; }
  bool Write(TPixelBytes pixels, const TImageLabel& label) override
  {
    images.emplace_back(pixels.begin(), pixels.end());
    labels.push_back(label);
    return true;
  }
  bool Close(const std::optional<TFrameCounts>&) override { return error_.empty(); }
  long ImagesWritten() const override { return static_cast<long>(images.size()); }
  const std::string& Error() const override { return error_; }

private:
  std::string error_;
};

} // namespace vxtool
