// SPDX-License-Identifier: MIT
// Chunks of images, one file after the other.
#include "tools/TOmeZarrWriter.h"

#include "tools/BloscChunk.h"
#include "tools/HalvedImage.h"
#include "tools/ImageColumns.h"
#include "tools/Json.h"
#include "tools/ZarrMetadata.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <filesystem>
#include <fstream>

namespace vxtool {

static_assert(std::endian::native == std::endian::little, "the arrays say that numbers are little-endian");

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLeastChunkBytes = 8U << 20U; // smaller files are slow on shared file systems
constexpr const char* kGroup = "{\"zarr_format\": 2}\n";
constexpr const char* kColumns = "vxmcd"; // the group of arrays with what is known of each image

// Whether a directory was made by this class.
bool IsOurs(const std::string& path)
{
  std::ifstream file(path + "/.zattrs");
  const Json json = Json::parse(file, nullptr, false);
  return json.is_object() && json.contains("multiscales") && json.contains(kColumns);
}

} // namespace

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
  if (!ChooseChunk() || !ChooseLevels() || !MakeRoom(overwrite)) return false;
  bool isMade = WriteDescription(std::nullopt, false) && WriteImageArrays();
  for (const TLevel& level : levels_)
    isMade = isMade && WriteText(level.name + "/.zattrs", JsonLine(ZarrDimensionsJson(options_)));
  if (isMade) return true;
  Close(std::nullopt);
  return false;
}

bool TOmeZarrWriter::ChooseChunk()
{
  const std::size_t image = shape_.Bytes();
  const std::size_t fitting = std::max<std::size_t>((kLeastChunkBytes + image - 1) / image, 1);
  const std::size_t planned = facts_.plannedImages > 0 ? static_cast<std::size_t>(facts_.plannedImages) : fitting;
  imagesInChunk_ =
      options_.chunkImages ? static_cast<std::size_t>(*options_.chunkImages) : std::min(fitting, planned);
  if (imagesInChunk_ > kMaxBloscBytes / image)
    return FailFor(path_, "a chunk of " + std::to_string(imagesInChunk_) + " images has more than 2 GiB");
  return true;
}

bool TOmeZarrWriter::ChooseLevels()
{
  TImageShape shape = shape_;
  for (int level = 0; level <= options_.pyramidLevels; ++level) {
    const bool isBuffered = level > 0 || imagesInChunk_ > 1;
    levels_.push_back(
        {std::to_string(level), shape, std::vector<std::byte>(isBuffered ? imagesInChunk_ * shape.Bytes() : 0)});
    if (shape.Pixels() == 1 && level < options_.pyramidLevels)
      return FailFor(path_, "--pyramid: images of this size have " + std::to_string(level) + " levels at most");
    shape = HalvedShape(shape);
  }
  return true;
}

// Whether nothing is lost with what the directory has: nothing yet, or what was made by this class.
bool TOmeZarrWriter::IsReplaceable() const
{
  std::error_code error;
  const fs::directory_iterator entries(path_, error);
  return !error &&
         (IsOurs(path_) || std::all_of(begin(entries), end(entries), [](const fs::directory_entry& entry) {
            return entry.path().filename() == ".zgroup" || entry.path().filename() == ".zattrs.part";
          }));
}

// Makes the directory, or empties an earlier one of the same kind. The description, by which it is known, goes last: when
// the tool is killed meanwhile, the directory can still be replaced.
bool TOmeZarrWriter::MakeRoom(bool overwrite)
{
  std::error_code error;
  if (fs::exists(fs::symlink_status(path_, error))) {
    if (!fs::is_directory(path_, error)) return FailFor(path_, "exists already and is no directory");
    if (!overwrite) return FailFor(path_, "exists already; give --overwrite to replace it");
    if (fs::is_symlink(path_, error)) path_ = fs::canonical(path_, error).string(); // the link stays
    if (!IsReplaceable())
      return FailFor(path_, "is not replaced: the directory is not one that this program has made");
  } else if (!fs::create_directory(path_, error))
    return FailFor(path_, error ? "cannot be created: " + error.message() : "another program is writing it");
  if (!lock_.Create(path_ + "/.zgroup", true)) return Fail(lock_.Error());
  const std::string_view group = kGroup;
  const bool isWritten = lock_.WriteAt(0, std::as_bytes(std::span(group)));
  for (const fs::directory_entry& entry : fs::directory_iterator(path_, error)) {
    const fs::path name = entry.path().filename();
    if (name != ".zgroup" && name != ".zattrs") fs::remove_all(entry.path(), error);
    if (error) return FailFor(entry.path().string(), "cannot be removed: " + error.message());
  }
  if (isWritten) return true;
  Fail(lock_.Error());
  fs::remove_all(path_, error);
  lock_.Close();
  return false;
}

bool TOmeZarrWriter::Write(TPixelBytes pixels, const TImageLabel& label)
{
  if (!error_.empty()) return false;
  if (pixels.size() != shape_.Bytes()) return Fail("an image has another size than the run");
  const bool isChunk = imagesInChunk_ == 1; // is compressed where it is
  if (!isChunk) std::copy(pixels.begin(), pixels.end(), levels_.front().Image(bufferedImages_).begin());
  TPixelBytes larger = pixels;
  for (std::size_t level = 1; level < levels_.size(); ++level) {
    HalveImage(larger, levels_[level - 1].shape, levels_[level].Image(bufferedImages_));
    larger = levels_[level].Image(bufferedImages_);
  }
  if (bufferedImages_ == 0) window_.Add(pixels, shape_.depth);
  labels_.push_back(label);
  ++bufferedImages_;
  return bufferedImages_ < imagesInChunk_ || WriteChunk(isChunk ? pixels : TPixelBytes(levels_.front().chunk));
}

// The last chunk is filled up with zeros.
TPixelBytes TOmeZarrWriter::Filled(TLevel& level) const
{
  const std::size_t used = bufferedImages_ * level.shape.Bytes();
  std::fill(level.chunk.begin() + static_cast<std::ptrdiff_t>(used), level.chunk.end(), std::byte{0});
  return level.chunk;
}

bool TOmeZarrWriter::WriteChunk(TPixelBytes first)
{
  bool isWritten = error_.empty();
  for (TLevel& level : levels_)
    isWritten = isWritten && WriteLevel(level, &level == &levels_.front() ? first : Filled(level));
  if (!isWritten) RemoveChunk(); // makes room for the rest
  if (isWritten) imagesOnDisk_ += bufferedImages_;
  bufferedImages_ = 0;
  labels_.resize(imagesOnDisk_);
  return isWritten && WriteImageArrays();
}

bool TOmeZarrWriter::WriteLevel(const TLevel& level, TPixelBytes bytes)
{
  if (options_.compression.codec != Codec::None)
    bytes = TBloscChunk(options_.compression, shape_.depth, options_.threads).Compress(bytes, compressed_);
  if (bytes.empty()) return FailFor(path_, "Blosc cannot compress a chunk");
  return WriteFile(level.name + "/" + ZarrChunkName(ChunkNumber(), options_), bytes);
}

bool TOmeZarrWriter::WriteFile(const std::string& name, std::span<const std::byte> bytes)
{
  const std::string path = path_ + "/" + name;
  std::error_code error;
  fs::create_directories(fs::path(path).parent_path(), error);
  lacksRoom_ = error == std::errc::no_space_on_device || error.value() == EDQUOT;
  if (error) return FailFor(path, "cannot be created: " + error.message());
  TOutputFile file;
  if (file.Create(path, true) && file.WriteAt(0, bytes) && file.Close()) return true;
  file.Discard();
  lacksRoom_ = file.LacksRoom();
  return Fail(file.Error());
}

// The text is replaced as a whole, so that a reader never finds half of it.
bool TOmeZarrWriter::WriteText(const std::string& name, const std::string& text)
{
  const std::string part = name + ".part";
  if (!WriteFile(part, std::as_bytes(std::span(text)))) return false;
  std::error_code error;
  fs::rename(path_ + "/" + part, path_ + "/" + name, error);
  return !error || FailFor(path_ + "/" + name, "cannot be written: " + error.message());
}

bool TOmeZarrWriter::WriteImageArrays()
{
  bool isWritten = true;
  for (const TLevel& level : levels_)
    isWritten =
        isWritten && WriteText(level.name + "/.zarray",
                               JsonLine(ZarrImagesJson(level.shape, imagesOnDisk_, imagesInChunk_, options_)));
  return isWritten;
}

bool TOmeZarrWriter::WriteColumn(const std::string& name, const std::vector<std::int64_t>& values)
{
  const std::string folder = std::string(kColumns) + "/" + name;
  const Json size = Json::array({values.size()});
  return WriteFile(folder + "/0", std::as_bytes(std::span(values))) &&
         WriteText(folder + "/.zarray", JsonLine(ZarrArrayJson(size, size, "<i8", nullptr))) &&
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
  Json json = ZarrDescription(fs::path(path_).filename().string(), facts_, shape_, window_, options_);
  json[kColumns] = FileJson(facts_, shape_, imagesOnDisk_, isClosed, counts);
  return WriteText(".zattrs", JsonLine(json));
}

// The one behind those that count.
void TOmeZarrWriter::RemoveChunk()
{
  std::error_code ignored;
  for (const TLevel& level : levels_)
    fs::remove_all(fs::path(path_) / level.name / std::to_string(ChunkNumber()), ignored);
}

bool TOmeZarrWriter::Close(const std::optional<TFrameCounts>& counts)
{
  if (!lock_.IsOpen()) return error_.empty();
  if (error_.empty() && bufferedImages_ > 0) WriteChunk(Filled(levels_.front()));
  std::error_code error;
  // Also after a failure, for the images of whole chunks. On a full disk the last ones make room for the rest.
  while (imagesOnDisk_ > 0 && !(WriteImageArrays() && WriteColumns() && WriteDescription(counts, true)) &&
         lacksRoom_) {
    imagesOnDisk_ = (imagesOnDisk_ - 1) / imagesInChunk_ * imagesInChunk_;
    labels_.resize(imagesOnDisk_);
    RemoveChunk();
  }
  if (imagesOnDisk_ == 0) fs::remove_all(path_, error);
  if (!lock_.Close()) Fail(lock_.Error());
  return error_.empty();
}

} // namespace vxtool
