// SPDX-License-Identifier: MIT
// The names of image files.
#include "runs/run_format.h"

#include <array>
#include <charconv>
#include <cstdio>

std::string RunFormat::ImageFileName(std::int64_t number, const std::string& stem)
{
  std::array<char, 32> digits{};
  std::snprintf(digits.data(), digits.size(), "%0*lld", kImageFileDigits, static_cast<long long>(number));
  return stem + "_" + digits.data() + kImageFileExtension;
}

std::optional<std::int64_t> RunFormat::ImageFileNumber(const std::string& name, const std::string& stem)
{
  const std::size_t start = stem.size() + 1;
  std::int64_t number = 0;
  if (name.size() < start + kImageFileDigits) return std::nullopt;
  std::from_chars(name.data() + start, name.data() + start + kImageFileDigits, number);
  return number >= 0 && name == ImageFileName(number, stem) ? std::optional(number) : std::nullopt;
}
