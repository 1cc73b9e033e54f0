// SPDX-License-Identifier: MIT
// Images, arrays and attributes, by way of the HDF5 library.
#include "tools/THdf5Writer.h"

#include "tools/ImageColumns.h"
#include "tools/Json.h"

#include <array>
#include <cstdlib>
#include <filesystem>

namespace vxtool {

namespace {

constexpr H5Z_filter_t kBloscFilter = 32001; // registered with the makers of the format
constexpr unsigned kBloscFilterVersions[] = {2, 2};
// The library's own room: for a file without images, and at most for each image (index of chunks, four numbers).
constexpr std::uint64_t kFixedRoom = 64U << 10U;
constexpr std::uint64_t kRoomForEach = 256;
constexpr std::uint64_t kDeflateOverhead = 512; // a byte in so many, at most
constexpr std::uint64_t kReserveStep = 32U << 20U;
constexpr auto kFlushInterval = std::chrono::seconds(1);

// The innermost reason.
herr_t TakeReason(unsigned, const H5E_error2_t* error, void* reason)
{
  *static_cast<std::string*>(reason) = error->desc ? error->desc : "";
  return 1; // no other one
}

THdf5Object Properties(hid_t kind)
{
  return {H5Pcreate(kind), H5Pclose};
}

// The file is locked already, from before it was cut until it is closed. The library's own lock comes too late: of two
// programs that begin at once, one would cut or delete what the other writes.
THdf5Object WithoutLock()
{
  THdf5Object access = Properties(H5P_FILE_ACCESS);
  H5Pset_file_locking(access, false, true);
  setenv("HDF5_USE_FILE_LOCKING", "FALSE", 1); // NOLINT(concurrency-mt-unsafe): goes before the property
  return access;
}

THdf5Object Space(std::initializer_list<hsize_t> sizes, const hsize_t* largest = nullptr)
{
  return {H5Screate_simple(static_cast<int>(sizes.size()), sizes.begin(), largest), H5Sclose};
}

THdf5Object Texts()
{
  THdf5Object type(H5Tcopy(H5T_C_S1), H5Tclose);
  H5Tset_size(type, H5T_VARIABLE);
  H5Tset_cset(type, H5T_CSET_UTF8);
  return type;
}

bool WriteAttribute(hid_t object, const std::string& name, hid_t type, hid_t space, const void* value)
{
  if (H5Aexists(object, name.c_str()) > 0) H5Adelete(object, name.c_str());
  const THdf5Object attribute(H5Acreate2(object, name.c_str(), type, space, H5P_DEFAULT, H5P_DEFAULT), H5Aclose);
  return attribute.IsValid() && H5Awrite(attribute, type, value) >= 0;
}

bool WriteText(hid_t object, const std::string& name, const std::string& text)
{
  const THdf5Object space(H5Screate(H5S_SCALAR), H5Sclose);
  const char* const value = text.c_str();
  return WriteAttribute(object, name, Texts(), space, &value);
}

// Each value of the object as an attribute, those of objects in it as NAME_KEY; none for what is not known.
bool WriteValues(hid_t object, const Json& json, const std::string& prefix = "")
{
  const THdf5Object space(H5Screate(H5S_SCALAR), H5Sclose);
  for (const auto& [key, value] : json.items()) {
    const std::string name = prefix + key;
    bool isDone = true;
    if (value.is_object())
      isDone = WriteValues(object, value, name + "_");
    else if (value.is_string())
      isDone = WriteText(object, name, value.get<std::string>());
    else if (value.is_number_float()) {
      const auto number = value.get<double>();
      isDone = WriteAttribute(object, name, H5T_NATIVE_DOUBLE, space, &number);
    } else if (!value.is_null()) {
      const std::int64_t number = value.is_boolean() ? value.get<bool>() : value.get<std::int64_t>();
      isDone = WriteAttribute(object, name, H5T_NATIVE_INT64, space, &number);
    }
    if (!isDone) return false;
  }
  return true;
}

hid_t PixelType(PixelDepth depth)
{
  return depth == PixelDepth::Bits32 ? H5T_STD_I32LE : depth == PixelDepth::Bits8 ? H5T_STD_U8LE : H5T_STD_U16LE;
}

} // namespace

bool THdf5Writer::Fail(const std::string& message)
{
  if (error_.empty()) error_ = message;
  return false;
}

bool THdf5Writer::Done(std::int64_t result)
{
  if (result >= 0) return true;
  std::string reason;
  H5Ewalk2(H5E_DEFAULT, H5E_WALK_UPWARD, TakeReason, &reason);
  return Fail(path_ + ": the HDF5 library has failed: " + reason);
}

bool THdf5Writer::Open(const std::string& path, bool overwrite, const TImageShape& shape, const TRunFacts& facts)
{
  path_ = path;
  shape_ = shape;
  facts_ = facts;
  if (compression_.codec == Codec::BloscZstd && shape.Bytes() > kMaxBloscBytes)
    return Fail(path + ": images of more than 2 GiB cannot be compressed");
  H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr); // messages are ours
  if (!room_.Create(path, overwrite)) return Fail(room_.Error());
  if (!std::filesystem::is_regular_file(path)) {
    room_.Close();
    return Fail(path + ": is not a regular file, which HDF5 needs");
  }
  if (CreateFile() && MakeGroups() && MakeImages() && WriteDescription(false, std::nullopt)) return true;
  Close(std::nullopt);
  return false;
}

bool THdf5Writer::CreateFile()
{
  if (!Reserve(0)) return false;
  file_ = {H5Fcreate(path_.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, WithoutLock()), H5Fclose};
  reserved_ = 0; // the library has cut it
  return Done(file_) && Reserve(0);
}

bool THdf5Writer::MakeGroups()
{
  const auto make = [](hid_t parent, const char* name) {
    return THdf5Object(H5Gcreate2(parent, name, H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT), H5Gclose);
  };
  entry_ = make(file_, "entry");
  if (!Done(entry_)) return false;
  data_ = make(entry_, "data");
  if (!Done(data_)) return false;
  const char* const axes[] = {"number", ".", "."};
  const bool areAttributesWritten =
      WriteText(file_, "default", "entry") && WriteText(entry_, "NX_class", "NXentry") &&
      WriteText(entry_, "default", "data") && WriteText(data_, "NX_class", "NXdata") &&
      WriteText(data_, "signal", "data") && WriteAttribute(data_, "axes", Texts(), Space({3}), axes) &&
      WriteValues(data_, {{"number_indices", 0}, {"ticks_indices", 0}, {"host_ns_indices", 0}});
  return Done(areAttributesWritten ? 0 : -1);
}

bool THdf5Writer::MakeImages()
{
  const auto [height, width] = std::pair<hsize_t, hsize_t>(shape_.height, shape_.width);
  const hsize_t chunk[] = {1, height, width};
  const hsize_t largest[] = {H5S_UNLIMITED, height, width};
  const THdf5Object layout = Properties(H5P_DATASET_CREATE);
  H5Pset_chunk(layout, 3, chunk);
  H5Pset_fill_time(layout, H5D_FILL_TIME_NEVER);
  if (compression_.codec == Codec::Gzip) {
    H5Pset_shuffle(layout);
    H5Pset_deflate(layout, static_cast<unsigned>(compression_.level));
  }
  if (compression_.codec == Codec::BloscZstd) {
    const TBloscChunk blosc(compression_, shape_.depth, threads_);
    const std::array<unsigned, 7> values = {kBloscFilterVersions[0],
                                            kBloscFilterVersions[1],
                                            static_cast<unsigned>(shape_.BytesPerPixel()),
                                            static_cast<unsigned>(shape_.Bytes()),
                                            static_cast<unsigned>(blosc.level),
                                            static_cast<unsigned>(blosc.shuffle),
                                            blosc.CodecNumber()};
    // Optional, because the library need not have the filter: chunks come to it compressed.
    H5Pset_filter(layout, kBloscFilter, H5Z_FLAG_OPTIONAL, values.size(), values.data());
  }
  const THdf5Object access = Properties(H5P_DATASET_ACCESS);
  H5Pset_chunk_cache(access, 0, 0, 1.0); // each image is written at once
  images_ = {H5Dcreate2(data_, "data", PixelType(shape_.depth), Space({0, height, width}, largest), H5P_DEFAULT,
                        layout, access),
             H5Dclose};
  if (!Done(images_)) return false;
  const auto value = [](const std::optional<double>& micrometres) {
    return micrometres ? Json(*micrometres) : Json(nullptr);
  };
  return Done(WriteValues(images_, {{"pixel_width_um", value(facts_.ImagePixelWidth())},
                                    {"pixel_height_um", value(facts_.ImagePixelHeight())}})
                  ? 0
                  : -1);
}

// Room for so many bytes behind what there is, and for what the library will add until the file is closed.
bool THdf5Writer::Reserve(std::uint64_t imageBytes)
{
  haddr_t end = 0;
  if (file_.IsValid() && !Done(H5Fget_eoa(file_, &end))) return false;
  const std::uint64_t needed = end + imageBytes + kFixedRoom + kRoomForEach * (labels_.size() + 1);
  if (needed <= reserved_) return true;
  const std::uint64_t start = std::min(end, reserved_);
  for (const std::uint64_t step : {kReserveStep, std::uint64_t{0}}) {
    if (!room_.Reserve(start, needed + step)) continue;
    reserved_ = needed + step;
    return true;
  }
  return Fail(room_.Error());
}

bool THdf5Writer::Write(TPixelBytes pixels, const TImageLabel& label)
{
  if (!error_.empty()) return false;
  if (pixels.size() != shape_.Bytes()) return Fail("an image has another size than the run");
  if (!WriteImage(pixels)) return false;
  labels_.push_back(label);
  const auto now = std::chrono::steady_clock::now();
  return now < flushed_ + kFlushInterval || Flush();
}

bool THdf5Writer::WriteImage(TPixelBytes pixels)
{
  const hsize_t place[] = {labels_.size(), 0, 0};
  const hsize_t size[] = {labels_.size() + 1, static_cast<hsize_t>(shape_.height),
                          static_cast<hsize_t>(shape_.width)};
  if (compression_.codec == Codec::Gzip) {
    const std::uint64_t most = pixels.size() + pixels.size() / kDeflateOverhead + kRoomForEach;
    if (!Reserve(most) || !Done(H5Dset_extent(images_, size))) return false;
    const hsize_t one[] = {1, size[1], size[2]};
    const THdf5Object memory = Space({1, size[1], size[2]});
    const THdf5Object file(H5Dget_space(images_), H5Sclose);
    H5Sselect_hyperslab(file, H5S_SELECT_SET, place, nullptr, one, nullptr);
    return Done(H5Dwrite(images_, PixelType(shape_.depth), memory, file, H5P_DEFAULT, pixels.data()));
  }
  if (compression_.codec == Codec::BloscZstd) {
    pixels = TBloscChunk(compression_, shape_.depth, threads_).Compress(pixels, compressed_);
    if (pixels.empty()) return Fail(path_ + ": Blosc cannot compress an image");
  }
  // Around the library's conversions and its cache.
  return Reserve(pixels.size()) && Done(H5Dset_extent(images_, size)) &&
         Done(H5Dwrite_chunk(images_, H5P_DEFAULT, 0, place, pixels.size(), pixels.data()));
}

// The library cuts the file to what it uses, so that room has to be reserved again.
bool THdf5Writer::Flush()
{
  flushed_ = std::chrono::steady_clock::now();
  haddr_t end = 0;
  if (!Done(H5Fflush(file_, H5F_SCOPE_GLOBAL)) || !Done(H5Fget_eoa(file_, &end))) return false;
  reserved_ = end - std::min<haddr_t>(end, kFixedRoom);
  return Reserve(0);
}

bool THdf5Writer::WriteColumns()
{
  for (const TImageColumn& column : kImageColumns) {
    const std::vector<std::int64_t> values = column.Of(labels_);
    const THdf5Object array(H5Dcreate2(data_, column.name, H5T_STD_I64LE, Space({values.size()}), H5P_DEFAULT,
                                       H5P_DEFAULT, H5P_DEFAULT),
                            H5Dclose);
    if (!Done(array) || !Done(H5Dwrite(array, H5T_NATIVE_INT64, H5S_ALL, H5S_ALL, H5P_DEFAULT, values.data())))
      return false;
  }
  return true;
}

bool THdf5Writer::WriteDescription(bool isComplete, const std::optional<TFrameCounts>& counts)
{
  const bool isWritten = WriteValues(entry_, FileJson(facts_, shape_, labels_.size(), isComplete, counts));
  return Done(isWritten ? 0 : -1);
}

bool THdf5Writer::Close(const std::optional<TFrameCounts>& counts)
{
  if (!room_.IsOpen()) return error_.empty();
  // Room for the rest is there also after a failed write, of which the array must not have a trace.
  const hsize_t size[] = {labels_.size(), static_cast<hsize_t>(shape_.height), static_cast<hsize_t>(shape_.width)};
  if (!labels_.empty() && Done(H5Dset_extent(images_, size)) && WriteColumns()) WriteDescription(true, counts);
  for (THdf5Object* object : {&images_, &data_, &entry_, &file_}) Done(object->Close() ? 0 : -1);
  if (labels_.empty())
    room_.Discard();
  else if (!CutToLength() || !room_.Close())
    Fail(room_.Error());
  return error_.empty();
}

// What was reserved and not used.
bool THdf5Writer::CutToLength()
{
  haddr_t end = 0;
  const THdf5Object file(H5Fopen(path_.c_str(), H5F_ACC_RDONLY, WithoutLock()), H5Fclose);
  return !Done(file) || !Done(H5Fget_eoa(file, &end)) || room_.Truncate(end);
}

} // namespace vxtool
