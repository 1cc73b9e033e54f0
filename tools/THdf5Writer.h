// SPDX-License-Identifier: MIT
// Writes images as one array in an HDF5 file.
#pragma once

#include "tools/BloscChunk.h"
#include "tools/IImageWriter.h"
#include "tools/TOutputFile.h"

#include <chrono>
#include <hdf5.h>
#include <vector>

namespace vxtool {

/// An object of the HDF5 library, closed at the end.
class THdf5Object final
{
public:
  THdf5Object() = default;
  THdf5Object(hid_t number, herr_t (*close)(hid_t)) : number_(number), close_(close) {}
  ~THdf5Object() { Close(); }
  THdf5Object(THdf5Object&& other) noexcept { *this = std::move(other); }
  THdf5Object& operator=(THdf5Object&& other) noexcept
  {
    std::swap(number_, other.number_);
    std::swap(close_, other.close_);
    return *this;
  }

  operator hid_t() const { return number_; } // NOLINT(google-explicit-constructor): an argument of its functions
  bool IsValid() const { return number_ >= 0; }
  /// False when the library has failed.
  bool Close()
  {
    const bool isClosed = !IsValid() || close_(number_) >= 0;
    number_ = H5I_INVALID_HID;
    return isClosed;
  }

private:
  hid_t number_ = H5I_INVALID_HID;
  herr_t (*close_)(hid_t) = nullptr;
};

/// An HDF5 file with the images in the array /entry/data/data, a chunk each, and what is known of each image in arrays
/// beside it. The library cannot go on after a write that has failed, so the file system sets room aside for everything
/// before the library writes it: when there is none, the file is completed with the images that it has. Once a second
/// the file is made valid. Owns its file; one thread at a time; errors as IImageWriter says.
class THdf5Writer final : public IImageWriter
{
public:
  THdf5Writer(const TCompression& compression, int threads) : compression_(compression), threads_(threads) {}

  bool Open(const std::string& path, bool overwrite, const TImageShape& shape, const TRunFacts& facts) override;
  bool Write(TPixelBytes pixels, const TImageLabel& label) override;
  bool Close(const std::optional<TFrameCounts>& counts) override;
  long ImagesWritten() const override { return static_cast<long>(labels_.size()); }
  const std::string& Error() const override { return error_; }

private:
  bool Fail(const std::string& message);
  /// Whether the library has done what was asked; otherwise fails with its reason.
  bool Done(std::int64_t result);
  bool CreateFile();
  bool MakeGroups();
  bool MakeImages();
  bool Reserve(std::uint64_t imageBytes);
  bool WriteImage(TPixelBytes pixels);
  bool Flush();
  bool WriteColumns();
  bool WriteDescription(bool isComplete, const std::optional<TFrameCounts>& counts);
  bool CutToLength();

  TCompression compression_;
  int threads_;
  std::string path_;
  TImageShape shape_;
  TRunFacts facts_;
  TOutputFile room_;
  std::uint64_t reserved_ = 0; // bytes of the file for which there is room
  THdf5Object file_;
  THdf5Object entry_;
  THdf5Object data_;
  THdf5Object images_;
  std::vector<std::byte> compressed_;
  std::vector<TImageLabel> labels_; // of the images written
  std::chrono::steady_clock::time_point flushed_;
  std::string error_;
};

} // namespace vxtool
