// SPDX-License-Identifier: MIT
// Words and numbers of images as files have them.
#include "tools/ImageData.h"

namespace vxtool {

const char* ImageCheckText(ImageCheck check)
{
  if (check == ImageCheck::Unchecked) return "unchecked";
  return check == ImageCheck::Right ? "right" : "wrong";
}

std::string TracksText(const std::vector<TTrack>& tracks)
{
  std::string text;
  for (const TTrack& track : tracks)
    text += (text.empty() ? "" : ",") + std::to_string(track.first) + "-" + std::to_string(track.last);
  return text;
}

} // namespace vxtool
