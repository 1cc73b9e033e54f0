// SPDX-License-Identifier: MIT
// Chunks of images, and the texts that say what they are.
#include "tools/TOmeZarrWriter.h"

#include "tools/BloscChunk.h"
#include "tools/ImageColumns.h"
#include "tools/Json.h"

#include <algorithm>
#include <bit>
#include <filesystem>
#include <fstream>

namespace vxtool {

static_assert(std::endian::native == std::endian::little, "the arrays say that numbers are little-endian");

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLeastChunkBytes = 8U << 20U; // smaller files are slow on shared file systems
constexpr int kBloscThreads = 2;
constexpr const char* kGroup = "{\"zarr_format\": 2}\n";
constexpr const char* kImages = "0";
constexpr const char* kColumns = "vxmcd"; // the group of arrays with what is known of each image

const char* PixelType(const TImageShape& shape)
{
  return shape.depth == PixelDepth::Bits32 ? "<i4" : shape.depth == PixelDepth::Bits8 ? "|u1" : "<u2";
}

// Without a fill value, because readers may take pixels of that value for missing ones.
Json ArrayJson(const Json& shape, const Json& chunks, const char* type, const Json& compressor)
{
  return {{"zarr_format", 2}, {"shape", shape},           {"chunks", chunks},
          {"dtype", type},    {"compressor", compressor}, {"fill_value", nullptr},
          {"order", "C"},     {"filters", nullptr},       {"dimension_separator", "/"}};
}

// An axis and its scale: a size without a unit where it is not known.
struct TAxis
{
  const char* name;
  const char* type;
  const char* unit;
  std::optional<double> scale;
};

Json MultiscalesJson(const std::string& name, const TRunFacts& facts)
{
  const auto pixel = [&](const std::optional<double>& micrometres, int binning) { // of a track it is not known
    return micrometres && facts.area.width > 0 ? std::optional(*micrometres * binning) : std::nullopt;
  };
  const TAxis axes[] = {
      {"t", "time", "second", facts.cycleSeconds > 0.0 ? std::optional(facts.cycleSeconds) : std::nullopt},
      {"y", "space", "micrometer", pixel(facts.pixelHeightMicrometres, facts.area.verticalBinning)},
      {"x", "space", "micrometer", pixel(facts.pixelWidthMicrometres, facts.area.horizontalBinning)}};
  Json axesJson = Json::array();
  Json scale = Json::array();
  for (const TAxis& axis : axes) {
    Json one = {{"name", axis.name}, {"type", axis.type}};
    if (axis.scale) one["unit"] = axis.unit;
    axesJson.push_back(one);
    scale.push_back(axis.scale.value_or(1.0));
  }
  const Json scaling = {{"type", "scale"}, {"scale", scale}};
  const Json dataset = {{"path", kImages}, {"coordinateTransformations", Json::array({scaling})}};
  return Json::array(
      {{{"version", "0.4"}, {"name", name}, {"axes", axesJson}, {"datasets", Json::array({dataset})}}});
}

// Whether a directory was made by this class.
bool IsOurs(const std::string& path)
{
  std::ifstream file(path + "/.zattrs");
  const Json json = Json::parse(file, nullptr, false);
  return json.is_object() && json.contains("multiscales") && json.contains(kColumns);
}

} // namespace

TOmeZarrWriter::TOmeZarrWriter(const TCompression& compression, std::optional<int> chunkImages)
    : compression_(compression), chunkImages_(chunkImages)
{
}

bool TOmeZarrWriter::Fail(const std::string& message)
{
  if (error_.empty()) error_ = message;
  return false;
}

bool TOmeZarrWriter::FailFor(const std::string& path, const std::string& problem)
{
  return Fail(path + ": " + problem);
}

bool TOmeZarrWriter::Open(const std::string& path, bool overwrite, const TImageShape& shape,
                          const TRunFacts& facts)
{
  path_ = path;
  while (path_.size() > 1 && path_.back() == '/') path_.pop_back();
  shape_ = shape;
  facts_ = facts;
  if (!ChooseChunk() || !MakeRoom(overwrite)) return false;
  if (WriteDescription(std::nullopt, false) && WriteImageArray() &&
      WriteText(std::string(kImages) + "/.zattrs",
                JsonLine({{"_ARRAY_DIMENSIONS", Json::array({"t", "y", "x"})}})))
    return true;
  Close(std::nullopt);
  return false;
}

bool TOmeZarrWriter::ChooseChunk()
{
  const std::size_t image = shape_.Bytes();
  const auto planned = static_cast<std::size_t>(std::max(facts_.plannedImages, 1L));
  const std::size_t fitting = std::max<std::size_t>((kLeastChunkBytes + image - 1) / image, 1);
  imagesInChunk_ = chunkImages_ ? static_cast<std::size_t>(*chunkImages_) : std::min(fitting, planned);
  if (imagesInChunk_ > kMaxBloscBytes / image)
    return FailFor(path_, "a chunk of " + std::to_string(imagesInChunk_) + " images has more than 2 GiB");
  chunk_.resize(imagesInChunk_ * image);
  return true;
}

// Makes the directory, in place of an earlier one of the same kind.
bool TOmeZarrWriter::MakeRoom(bool overwrite)
{
  std::error_code error;
  if (fs::exists(fs::symlink_status(path_, error))) {
    if (!fs::is_directory(path_, error)) return FailFor(path_, "exists already and is no directory");
    if (!overwrite) return FailFor(path_, "exists already; give --overwrite to replace it");
    if (!fs::is_empty(path_, error) && !IsOurs(path_))
      return FailFor(path_, "is not replaced: the directory is not one that this program has made");
    TOutputFile earlier;
    if (!earlier.Create(path_ + "/.zgroup", true)) return Fail(earlier.Error());
    fs::remove_all(path_, error);
    if (error) return FailFor(path_, "cannot be removed: " + error.message());
  }
  if (!fs::create_directory(path_, error)) return FailFor(path_, "cannot be created: " + error.message());
  const std::string_view group = kGroup;
  if (lock_.Create(path_ + "/.zgroup", true) && lock_.WriteAt(0, std::as_bytes(std::span(group)))) return true;
  Fail(lock_.Error());
  fs::remove_all(path_, error);
  lock_.Close();
  return false;
}

bool TOmeZarrWriter::Write(TPixelBytes pixels, const TImageLabel& label)
{
  if (!error_.empty()) return false;
  if (pixels.size() != shape_.Bytes()) return Fail("an image has another size than the run");
  std::copy(pixels.begin(), pixels.end(),
            chunk_.begin() + static_cast<std::ptrdiff_t>(bufferedImages_ * shape_.Bytes()));
  labels_.push_back(label);
  ++bufferedImages_;
  return bufferedImages_ < imagesInChunk_ || WriteChunk();
}

bool TOmeZarrWriter::WriteChunk()
{
  std::fill(chunk_.begin() + static_cast<std::ptrdiff_t>(bufferedImages_ * shape_.Bytes()), chunk_.end(),
            std::byte{0});
  std::span<const std::byte> bytes = chunk_;
  if (compression_.codec != Codec::None) {
    bytes = TBloscChunk(compression_, shape_.depth, kBloscThreads).Compress(chunk_, compressed_);
    if (bytes.empty()) Fail(path_ + ": Blosc cannot compress a chunk");
  }
  const std::string name = std::string(kImages) + "/" + std::to_string(imagesOnDisk_ / imagesInChunk_) + "/0/0";
  if (error_.empty() && WriteChunkFile(name, bytes)) imagesOnDisk_ += bufferedImages_;
  bufferedImages_ = 0;
  labels_.resize(imagesOnDisk_);
  return error_.empty() && WriteImageArray();
}

bool TOmeZarrWriter::WriteChunkFile(const std::string& name, std::span<const std::byte> bytes)
{
  const std::string path = path_ + "/" + name;
  std::error_code error;
  fs::create_directories(fs::path(path).parent_path(), error);
  if (error) return FailFor(path, "cannot be created: " + error.message());
  TOutputFile file;
  if (file.Create(path, true) && file.WriteAt(0, bytes) && file.Close()) return true;
  file.Discard();
  return Fail(file.Error());
}

// The text is replaced as a whole, so that a reader never finds half of it.
bool TOmeZarrWriter::WriteText(const std::string& name, const std::string& text)
{
  const std::string part = name + ".part";
  if (!WriteChunkFile(part, std::as_bytes(std::span(text)))) return false;
  std::error_code error;
  fs::rename(path_ + "/" + part, path_ + "/" + name, error);
  return !error || FailFor(path_ + "/" + name, "cannot be written: " + error.message());
}

bool TOmeZarrWriter::WriteImageArray()
{
  const auto [width, height] = std::pair(shape_.width, shape_.height);
  Json compressor;
  if (compression_.codec != Codec::None) {
    const TBloscChunk blosc(compression_, shape_.depth, kBloscThreads);
    compressor = {{"id", "blosc"},
                  {"cname", blosc.codec},
                  {"clevel", blosc.level},
                  {"shuffle", blosc.shuffle},
                  {"blocksize", 0}};
  }
  return WriteText(
      std::string(kImages) + "/.zarray",
      JsonLine(ArrayJson(Json::array({imagesOnDisk_, height, width}), Json::array({imagesInChunk_, height, width}),
                         PixelType(shape_), compressor)));
}

bool TOmeZarrWriter::WriteColumn(const std::string& name, const std::vector<std::int64_t>& values)
{
  const std::string folder = std::string(kColumns) + "/" + name;
  const Json size = Json::array({values.size()});
  return WriteChunkFile(folder + "/0", std::as_bytes(std::span(values))) &&
         WriteText(folder + "/.zarray", JsonLine(ArrayJson(size, size, "<i8", nullptr))) &&
         WriteText(folder + "/.zattrs", JsonLine({{"_ARRAY_DIMENSIONS", Json::array({"t"})}}));
}

bool TOmeZarrWriter::WriteColumns()
{
  bool isWritten = WriteText(std::string(kColumns) + "/.zgroup", kGroup);
  for (const TImageColumn& column : kImageColumns)
    isWritten = isWritten && WriteColumn(column.name, column.Of(labels_));
  return isWritten;
}

bool TOmeZarrWriter::WriteDescription(const std::optional<TFrameCounts>& counts, bool isClosed)
{
  const Json json = {{"multiscales", MultiscalesJson(fs::path(path_).filename().string(), facts_)},
                     {kColumns, FileJson(facts_, shape_, imagesOnDisk_, isClosed, counts)}};
  return WriteText(".zattrs", JsonLine(json));
}

bool TOmeZarrWriter::Close(const std::optional<TFrameCounts>& counts)
{
  if (!lock_.IsOpen()) return error_.empty();
  if (error_.empty() && bufferedImages_ > 0) WriteChunk();
  std::error_code error;
  if (imagesOnDisk_ == 0)
    fs::remove_all(path_, error);
  else if (WriteColumns()) // also after a failure, for the images of whole chunks
    WriteDescription(counts, true);
  if (!lock_.Close()) Fail(lock_.Error());
  return error_.empty();
}

} // namespace vxtool
