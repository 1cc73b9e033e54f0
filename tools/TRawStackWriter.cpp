// SPDX-License-Identifier: MIT
// Pixels as they are, with a description in JSON.
#include "tools/TRawStackWriter.h"

#include "tools/Json.h"

#include <bit>

namespace vxtool {

static_assert(std::endian::native == std::endian::little, "the description says that pixels are little-endian");

bool TRawStackWriter::Fail(const std::string& message)
{
  if (error_.empty()) error_ = message;
  return false;
}

bool TRawStackWriter::Open(const std::string& path, bool overwrite, const TImageShape& shape,
                           const TRunFacts& facts)
{
  path_ = path;
  shape_ = shape;
  facts_ = facts;
  std::string message;
  if (IsProtectedFile(path + ".json", overwrite, message)) return Fail(message);
  if (!file_.Create(path, overwrite)) return Fail(file_.Error());
  const std::string text = Description(std::nullopt, false);
  if (description_.Create(path + ".json", overwrite) && description_.WriteAt(0, std::as_bytes(std::span(text))))
    return true;
  Fail(description_.Error());
  file_.Discard();
  return false;
}

bool TRawStackWriter::Write(TPixelBytes pixels, const TImageLabel& label)
{
  if (!error_.empty()) return false;
  if (pixels.size() != shape_.Bytes()) return Fail("an image has another size than the run");
  if (!file_.WriteAt(labels_.size() * shape_.Bytes(), pixels)) return Fail(file_.Error());
  labels_.push_back(label);
  return true;
}

bool TRawStackWriter::Close(const std::optional<TFrameCounts>& counts)
{
  if (!file_.IsOpen()) return error_.empty();
  if (labels_.empty()) {
    file_.Discard();
    description_.Discard();
    return error_.empty();
  }
  if (!file_.Truncate(labels_.size() * shape_.Bytes()) || !file_.Close()) Fail(file_.Error());
  const std::string text = Description(counts, true);
  if (!description_.WriteAt(0, std::as_bytes(std::span(text))) || !description_.Truncate(text.size()) ||
      !description_.Close())
    Fail(description_.Error());
  return error_.empty();
}

std::string TRawStackWriter::Description(const std::optional<TFrameCounts>& counts, bool isClosed) const
{
  const std::size_t slash = path_.rfind('/');
  Json json = {{"software", facts_.software},
               {"file", path_.substr(slash == std::string::npos ? 0 : slash + 1)},
               {"complete", isClosed},
               {"images", ImagesWritten()},
               {"image_bytes", shape_.Bytes()},
               {"pixel_type", shape_.depth == PixelDepth::Bits32  ? "int32"
                              : shape_.depth == PixelDepth::Bits8 ? "uint8"
                                                                  : "uint16"},
               {"byte_order", "little"}};
  json.update(FactsJson(facts_, shape_));
  if (!isClosed) return JsonLine(json);
  PutCounts(json, counts);
  // Put together as text: a JSON object for each of a million images would take a gigabyte.
  std::string text = json.dump(-1, ' ', false, Json::error_handler_t::replace);
  text.back() = ',';
  text += "\"frames\":[";
  for (const TImageLabel& label : labels_) {
    Json frame = {{"image", label.number}, {"ticks", JsonOrNull(label.ticks)}};
    if (label.hostNanoseconds) frame["host_ns"] = *label.hostNanoseconds;
    if (label.check) frame["check"] = ImageCheckText(*label.check);
    text += frame.dump() + ",";
  }
  text.back() = ']';
  return text + "}\n";
}

} // namespace vxtool
