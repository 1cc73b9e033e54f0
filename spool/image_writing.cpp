// SPDX-License-Identifier: MIT
// The two halves of writing an image through a spooler.
#include "spool/image_writing.h"

#include "spool/IImage.h"
#include "spool/ISpooler.h"
#include "utility/TQuorinLibDebugOutput.h"

#include <cstring>
#include <exception>

using QuorinUtility::TQuorinLibDebugOutput;

namespace {

constexpr int kFailed = 1; // the result of an operation that threw, or said success and gave nothing

int Open(ISpooler& spooler, unsigned int index, IImage*& image)
{
  const int result = spooler.OpenImage(index, ISpooler::kReadWrite, image);
  return result == 0 && !image ? kFailed : result;
}

int Lock(IImage& image, unsigned char*& destination)
{
  const int result = image.Lock(destination);
  return result == 0 && !destination ? kFailed : result;
}

/// The result of @p operation, logged unless it is success. @p what tells the log which operation it was.
template <class Operation>
int Logged(const char* what, Operation operation)
{
  try {
    const int result = operation();
    if (result != 0)
      TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "%s of an image failed with %d", what, result);
    return result;
  } catch (const std::exception& error) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "%s of an image failed: %s", what, error.what());
    return kFailed;
  }
}

bool IsWritable(const ISpooler* spooler, int index, const unsigned char* buffer, int sizeBytes)
{
  if (spooler && index >= 0 && sizeBytes >= 0 && (buffer || sizeBytes == 0)) return true;
  TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "image %d of %d bytes cannot be written: %s", index,
                                sizeBytes, spooler ? "no such frame" : "no spooler");
  return false;
}

} // namespace

IImage* WriteImage(ISpooler* spooler, int index, const unsigned char* buffer, int sizeBytes)
{
  if (!IsWritable(spooler, index, buffer, sizeBytes)) return nullptr;
  IImage* image = nullptr;
  if (Logged("open", [&] { return Open(*spooler, static_cast<unsigned int>(index), image); }) != 0) return nullptr;
  unsigned char* destination = nullptr;
  if (Logged("lock", [&] { return Lock(*image, destination); }) != 0) {
    Logged("close", [&] { return spooler->CloseImage(image); });
    return nullptr;
  }
  if (sizeBytes > 0) std::memcpy(destination, buffer, static_cast<std::size_t>(sizeBytes));
  return image;
}

void FinishImage(ISpooler& spooler, IImage* image)
{
  if (!image) return;
  Logged("unlock", [&] { return image->Unlock(); });
  Logged("close", [&] { return spooler.CloseImage(image); });
}
