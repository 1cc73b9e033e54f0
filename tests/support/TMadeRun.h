// SPDX-License-Identifier: MIT
// Makes directories of recorded runs, byte by byte and without the library's own writer or the format's header.
#pragma once

#include "runs/frame_decoding.h"

#include <cstdint>
#include <string>
#include <vector>

/// A run to be made. Public fields are its description.
struct TMadeRun
{
  std::string encoding = "Mono16";
  int width = 6;
  int height = 4;
  int rowPadding = 0; ///< bytes behind the pixels of each row
  int tail = 0;       ///< bytes between the last row and the metadata
  bool hasMetadata = true;
  int images = 7;
  int imagesPerFile = 3;
  std::string state = "complete";
  int imagesExpected = 0; ///< 0: as many as there are
  std::string extra;      ///< lines behind the description

  /// What pixel @p index of image @p number (from 1) is.
  std::uint32_t Pixel(long number, int index) const;
  long long Ticks(long number) const { return 5000 + 100 * number; }
  /// An image as the camera would deliver it.
  std::vector<unsigned char> Frame(long number) const;
  /// The pixels of an image as a file has them: clipped when they do not fit.
  std::vector<std::byte> Pixels(long number, PixelDepth depth) const;

  std::string Description() const;
  /// Writes everything; the index in the order of @p order (numbers from 1), all images in turn without it.
  void Write(const std::string& directory, std::vector<long> order = {}) const;

private:
  int BytesPerRow() const;
};

/// Writes the file anew.
void PutFileBytes(const std::string& path, const std::string& bytes);
