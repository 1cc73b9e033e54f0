// SPDX-License-Identifier: MIT
// Several images in each file, opened and closed in any order, and the views of their places.
#include "spool/TRandomAccessMultiImageSpooler.h"

#include "features/TSDK3Exception.h"
#include "utility/TAutoQuorinCriticalSection.h"
#include "utility/TQuorinLibDebugOutput.h"
#include "utility/TQuorinMisc.h"

#include <array>
#include <memory>
#include <string>

using QuorinUtility::TAutoQuorinCriticalSection;
using QuorinUtility::TQuorinLibDebugOutput;
using QuorinUtility::TQuorinMisc;

namespace {

constexpr int kFailed = 1;

/// Logs one text and throws the other as a TSDK3Exception. The two differ a little here and there; kept for programs
/// that search for them.
[[noreturn]] void LogAndThrow(int line, const char* function, const char* logged, const char* thrown)
{
  TQuorinLibDebugOutput::OutputText(__FILE__, line, function, TQuorinLibDebugOutput::Error, logged);
  throw TSDK3Exception(std::string(thrown));
}

[[noreturn]] void LogAndThrow(int line, const char* function, const char* text)
{
  LogAndThrow(line, function, text, text);
}

} // namespace

TOffsetMultiImage::TOffsetMultiImage(IImage* file, std::uint64_t imageSizeBytes, unsigned int position)
    : file_(file), imageSizeBytes_(imageSizeBytes), position_(position)
{
  if (!file) LogAndThrow(__LINE__, __func__, "TNthMultiImage: Error - IImage* cannot be NULL in constructor\n");
  if (imageSizeBytes == 0)
    LogAndThrow(__LINE__, __func__, "TNthMultiImage: Error - Image size cannot be zero.\n",
                "TNthMultiImage: Error - Image size cannot be zero\n");
}

int TOffsetMultiImage::Lock(unsigned char*& destination)
{
  unsigned char* base = nullptr;
  const int result = file_->Lock(base);
  if (result == 0) destination = base + position_ * imageSizeBytes_;
  return result;
}

int TOffsetMultiImage::Unlock()
{
  return file_->Unlock();
}

TSerialMultiImage::TSerialMultiImage(IImage* file, std::uint64_t imageSizeBytes, unsigned int imagesPerFile)
    : file_(file), imageSizeBytes_(imageSizeBytes), imagesPerFile_(imagesPerFile)
{
  if (!file) LogAndThrow(__LINE__, __func__, "TMultiImage: Error - IImage* cannot be NULL in constructor\n");
  if (imagesPerFile == 0)
    LogAndThrow(__LINE__, __func__, "TMultiImage: Error - Number of imagse per file cannot be zero.\n",
                "TMultiImage: Error - Number of images per file cannot be zero\n");
  if (imageSizeBytes == 0)
    LogAndThrow(__LINE__, __func__, "TMultiImage: Error - Image size cannot be zero.\n",
                "TMultiImage: Error - Image size cannot be zero\n");
}

int TSerialMultiImage::Lock(unsigned char*& destination)
{
  const TAutoQuorinCriticalSection lock(&lock_);
  if (lockCount_ == imagesPerFile_)
    LogAndThrow(__LINE__, __func__,
                "TMultiImage: Error - Lock called more times than there are images per file.\n");
  if (lockCount_ == 0) {
    const int result = file_->Lock(nextDestination_);
    if (result != 0) return result;
  }
  destination = nextDestination_;
  ++lockCount_;
  nextDestination_ += imageSizeBytes_;
  return 0;
}

int TSerialMultiImage::Unlock()
{
  const TAutoQuorinCriticalSection lock(&lock_);
  if (unlockCount_ == imagesPerFile_)
    LogAndThrow(__LINE__, __func__,
                "TMultiImage: Error - Unlock called more times than there are images per file.\n");
  ++unlockCount_;
  return unlockCount_ == imagesPerFile_ ? file_->Unlock() : 0;
}

int TSerialMultiImage::ForceUnlock()
{
  return file_->Unlock();
}

TRandomAccessMultiImageSpooler::TRandomAccessMultiImageSpooler(ISpooler* fileSpooler, unsigned int imagesPerFile)
    : fileSpooler_(fileSpooler), imagesPerFile_(imagesPerFile)
{
  if (!fileSpooler)
    LogAndThrow(__LINE__, __func__, "TMultiImageSpooler: Error - ISpooler* cannot be NULL in constructor\n");
  if (imagesPerFile == 0) {
    std::array<char, 128> text;
    TQuorinMisc::snprintf(
        text.data(), text.size(),
        "TMultiImageSpooler: Error - Number of imagse per file cannot be zero. Images Per File[ %i ]\n",
        static_cast<int>(imagesPerFile));
    LogAndThrow(__LINE__, __func__, text.data(),
                "TMultiImageSpooler: Error - Number of images per file cannot be zero\n");
  }
}

TRandomAccessMultiImageSpooler::~TRandomAccessMultiImageSpooler()
{
  CloseAll();
}

void TRandomAccessMultiImageSpooler::CloseAll()
{
  const TAutoQuorinCriticalSection lock(&lock_);
  if (imageToFile_.empty()) return;
  TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "%zu images were still open", imageToFile_.size());
  for (const auto& [image, file] : imageToFile_) delete image;
  for (const auto& [file, image] : files_) fileSpooler_->CloseImage(image);
  imageToFile_.clear();
  openCounts_.clear();
  files_.clear();
}

int TRandomAccessMultiImageSpooler::OpenImage(unsigned int index, int mode, IImage*& image)
{
  const TAutoQuorinCriticalSection lock(&lock_);
  const int file = static_cast<int>(index / imagesPerFile_);
  const int result = OpenFile(file, mode);
  if (result != 0) return result;
  try {
    std::unique_ptr<IImage> opened(CreateOffsetMultiImage(files_[file], imageSizeBytes_, index % imagesPerFile_));
    imageToFile_[opened.get()] = file;
    ++openCounts_[file];
    image = opened.release();
    return 0;
  } catch (...) {
    ReleaseFile(file, 0);
    throw;
  }
}

int TRandomAccessMultiImageSpooler::OpenFile(int file, int mode)
{
  if (openCounts_.count(file) != 0) return 0;
  // The entries come first: nothing can fail once the file is open.
  const auto entry = files_.emplace(file, nullptr).first;
  int result = kFailed;
  try {
    openCounts_.emplace(file, 0);
    result = fileSpooler_->OpenImage(static_cast<unsigned int>(file), mode, entry->second);
  } catch (...) {
    openCounts_.erase(file);
    files_.erase(file);
    throw;
  }
  if (result != 0) {
    openCounts_.erase(file);
    files_.erase(file);
  }
  return result;
}

int TRandomAccessMultiImageSpooler::CloseImage(IImage* image)
{
  const TAutoQuorinCriticalSection lock(&lock_);
  const auto entry = imageToFile_.find(image);
  if (entry == imageToFile_.end()) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "image %p is not open", static_cast<void*>(image));
    return kFailed;
  }
  const int file = entry->second;
  imageToFile_.erase(entry);
  delete image;
  return ReleaseFile(file, 1);
}

int TRandomAccessMultiImageSpooler::ReleaseFile(int file, int images)
{
  int& count = openCounts_[file];
  count -= images;
  if (count > 0) return 0;
  IImage* const fileImage = files_[file];
  openCounts_.erase(file);
  files_.erase(file);
  return fileImage ? fileSpooler_->CloseImage(fileImage) : 0;
}

int TRandomAccessMultiImageSpooler::SetImageSizeBytes(std::uint64_t sizeBytes)
{
  const TAutoQuorinCriticalSection lock(&lock_);
  std::uint64_t fileSizeBytes = 0;
  if (__builtin_mul_overflow(sizeBytes, std::uint64_t{imagesPerFile_}, &fileSizeBytes)) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "%u images of %llu bytes are too much for a file",
                                  imagesPerFile_, static_cast<unsigned long long>(sizeBytes));
    return kFailed;
  }
  imageSizeBytes_ = sizeBytes;
  return fileSpooler_->SetImageSizeBytes(fileSizeBytes);
}

int TRandomAccessMultiImageSpooler::SetPath(const wchar_t* path)
{
  return fileSpooler_->SetPath(path);
}

int TRandomAccessMultiImageSpooler::SetStem(const wchar_t* stem)
{
  return fileSpooler_->SetStem(stem);
}

int TRandomAccessMultiImageSpooler::Remove()
{
  return fileSpooler_->Remove();
}

IImage* TRandomAccessMultiImageSpooler::CreateOffsetMultiImage(IImage* file, std::uint64_t imageSizeBytes,
                                                               unsigned int position)
{
  return std::make_unique<TOffsetMultiImage>(file, imageSizeBytes, position).release();
}
