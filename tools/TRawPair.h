// SPDX-License-Identifier: MIT
// A file of pixels with the description in JSON beside it, as TRawStackWriter writes them.
#pragma once

#include "tools/ImageData.h"

#include <fstream>
#include <string>
#include <vector>

namespace vxtool {

/// Reads both files. Owns the file of pixels; one thread at a time. Operations return false on failure, and Error() then
/// says which file, and what is wrong with it.
class TRawPair final
{
public:
  /// Reads the description, and checks it against the size of the file of pixels.
  bool Open(const std::string& path);
  /// Reads an image of the file. @param index  from 0
  bool Read(std::size_t index, std::vector<std::byte>& pixels);

  const TImageShape& Shape() const { return shape_; }
  const TRunFacts& Facts() const { return facts_; }
  /// One for each image.
  const std::vector<TImageLabel>& Labels() const { return labels_; }
  /// Of the run that the images are from.
  const TFrameCounts& Counts() const { return counts_; }
  const std::string& Error() const { return error_; }

private:
  bool Fail(const std::string& message);
  bool Describe(const std::string& text);

  std::string path_;
  std::ifstream file_;
  TImageShape shape_;
  TRunFacts facts_;
  TFrameCounts counts_;
  std::vector<TImageLabel> labels_;
  std::string error_;
};

} // namespace vxtool
