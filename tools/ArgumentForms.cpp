// SPDX-License-Identifier: MIT
// Arguments that are read strictly.
#include "tools/ArgumentForms.h"

#include <charconv>
#include <map>

namespace vxtool {

namespace {

constexpr int kMaxImages = 1'000'000'000;
constexpr double kMaxSeconds = 1.0e6;

/// Takes numbers and the signs between them off the front of a text.
class TFormReader
{
public:
  explicit TFormReader(const std::string& text) : next_(text.data()), end_(text.data() + text.size()) {}

  bool Number(int& number, int largest = kMaxSide)
  {
    const auto [rest, error] = std::from_chars(next_, end_, number);
    next_ = rest;
    return error == std::errc{} && number >= 1 && number <= largest;
  }
  bool Sign(char sign)
  {
    if (IsAtEnd() || *next_ != sign) return false;
    ++next_;
    return true;
  }
  bool IsAtEnd() const { return next_ == end_; }

private:
  const char* next_;
  const char* end_;
};

} // namespace

bool ParseArea(const std::string& text, TImageAreaOptions& area)
{
  TFormReader reader(text);
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
  if (!reader.Number(left) || !reader.Sign(',') || !reader.Number(top) || !reader.Sign(',') ||
      !reader.Number(width) || !reader.Sign('x') || !reader.Number(height) || !reader.IsAtEnd())
    return false;
  area.left = left;
  area.top = top;
  area.width = width;
  area.height = height;
  return true;
}

bool ParseBinning(const std::string& text, TImageAreaOptions& area)
{
  TFormReader reader(text);
  int horizontal = 0;
  int vertical = 0;
  if (!reader.Number(horizontal) || !reader.Sign('x') || !reader.Number(vertical) || !reader.IsAtEnd())
    return false;
  area.horizontalBinning = horizontal;
  area.verticalBinning = vertical;
  return true;
}

bool ParseTracks(const std::string& text, std::vector<TTrack>& tracks)
{
  TFormReader reader(text);
  std::vector<TTrack> read;
  do {
    TTrack track;
    if (!reader.Number(track.first) || !reader.Sign('-') || !reader.Number(track.last) || track.last < track.first)
      return false;
    read.push_back(track);
  } while (reader.Sign(','));
  if (!reader.IsAtEnd()) return false;
  tracks = read;
  return true;
}

bool ParseImageNumbers(const std::string& text, TNumberRanges& numbers)
{
  TFormReader reader(text);
  std::vector<TNumberRange> read;
  do {
    TNumberRange range;
    int number = 0;
    if (!reader.Number(number, kMaxImages)) return false;
    range.first = range.last = number;
    if (reader.Sign('-')) {
      if (!reader.Number(number, kMaxImages) || number < range.first) return false;
      range.last = number;
    }
    read.push_back(range);
  } while (reader.Sign(','));
  if (!reader.IsAtEnd()) return false;
  numbers = TNumberRanges(read);
  return true;
}

std::string SizeText(int horizontal, int vertical)
{
  return std::to_string(horizontal) + "x" + std::to_string(vertical);
}

bool ParseWholeNumber(const std::string& text, long& number)
{
  const char* const end = text.data() + text.size();
  long value = 0;
  const auto [rest, error] = std::from_chars(text.data() + (text.starts_with('+') ? 1 : 0), end, value);
  if (error != std::errc{} || rest != end) return false;
  number = value;
  return true;
}

bool ParseSeconds(const std::string& text, double& seconds)
{
  double value = 0.0;
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool isNumber = error == std::errc{} && rest == text.data() + text.size();
  if (!isNumber || !(value > 0.0 && value <= kMaxSeconds)) return false;
  seconds = value;
  return true;
}

bool ParseCompression(const std::string& text, TCompression& compression)
{
  static const std::map<std::string, Codec> codecs = {{"zstd", Codec::Zstd},
                                                      {"lz4", Codec::Lz4},
                                                      {"gzip", Codec::Gzip},
                                                      {"blosc-zstd", Codec::BloscZstd},
                                                      {"none", Codec::None}};
  const std::size_t colon = text.find(':');
  const auto codec = codecs.find(text.substr(0, colon));
  if (codec == codecs.end()) return false;
  TCompression parsed{codec->second};
  if (colon != std::string::npos) {
    const std::string level = text.substr(colon + 1);
    if (codec->second == Codec::None || level.size() != 1 || level < "1" || level > "9") return false;
    parsed.level = level[0] - '0';
  }
  compression = parsed;
  return true;
}

} // namespace vxtool
