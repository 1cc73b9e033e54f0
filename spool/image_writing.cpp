// SPDX-License-Identifier: MIT
// What the algorithms that write images share: opening and filling them, and having them closed on other threads.
#include "spool/image_writing.h"

#include "spool/ISpooler.h"
#include "utility/IQuorinTask.h"
#include "utility/TQuorinLibDebugOutput.h"
#include "utility/TQuorinTaskLauncher.h"

#include <algorithm>
#include <cstring>
#include <exception>

using QuorinUtility::IQuorinTask;
using QuorinUtility::TQuorinLibDebugOutput;
using QuorinUtility::TQuorinTaskLauncher;

namespace {

constexpr int kFailed = 1; // the result of an operation that threw, or reported success without a result

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

/// The result of @p operation, logged unless it is success. @p what names the operation in the log.
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

bool WriteFrame(ISpooler* spooler, int index, const unsigned char* buffer, int sizeBytes, IImage*& image)
{
  if (!IsWritable(spooler, index, buffer, sizeBytes)) return false;
  IImage* target = image;
  if (!target && Logged("open", [&] { return Open(*spooler, static_cast<unsigned int>(index), target); }) != 0)
    return false;
  unsigned char* destination = nullptr;
  if (Logged("lock", [&] { return Lock(*target, destination); }) != 0) {
    if (!image) Logged("close", [&] { return spooler->CloseImage(target); });
    return false;
  }
  if (sizeBytes > 0) std::memcpy(destination, buffer, static_cast<std::size_t>(sizeBytes));
  image = target;
  return true;
}

bool UnlockImage(IImage& image)
{
  return Logged("unlock", [&] { return image.Unlock(); }) == 0;
}

void FinishImage(ISpooler& spooler, IImage* image)
{
  if (!image) return;
  UnlockImage(*image);
  Logged("close", [&] { return spooler.CloseImage(image); });
}

std::vector<std::unique_ptr<TQuorinTaskLauncher>> MakeLaunchers(int count)
{
  if (count > kMaxLaunchers)
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, TQuorinLibDebugOutput::Warning,
                                  "%d spool threads are too many, there will be %d", count, kMaxLaunchers);
  std::vector<std::unique_ptr<TQuorinTaskLauncher>> launchers(
      static_cast<std::size_t>(std::clamp(count, 0, kMaxLaunchers)));
  for (auto& launcher : launchers) launcher = std::make_unique<TQuorinTaskLauncher>();
  return launchers;
}

void LaunchOrExecute(TQuorinTaskLauncher* launcher, IQuorinTask* task, void* argument)
{
  // A launcher without a thread would never run the first task, and block the caller at the second.
  if (launcher && launcher->IsAlive())
    launcher->Launch(task, argument);
  else
    task->Execute(argument);
}
