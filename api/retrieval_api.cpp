// SPDX-License-Identifier: MIT
// Copying images of the current or last run.
#include "acquisition/TVxmcdAcquisitionManager.h"
#include "api/call_log.h"
#include "api/entry_points.h"
#include "api/TCameraUse.h"
#include "features/feature_access.h"
#include "features/feature_names.h"
#include "features/TValueText.h"
#include "retrieval/TPackedFetchImage.h"
#include "retrieval/TUnpackedFetchImage.h"
#include "utility/outputs.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <type_traits>

namespace EntryPoint {

namespace {

// Returns 0 for a failed read or a value that no image can have; with 0 nothing is copied.
int ReadGeometry(int coreHandle, const wchar_t* feature)
{
  long long value = 0;
  ReadInt(coreHandle, feature, value);
  return value < 0 || value > std::numeric_limits<int>::max() ? 0 : static_cast<int>(value);
}

/// Calls @p action with the fetcher that turns the camera's present encoding into pixels of type Dst.
template <class Dst, class Action>
unsigned int Fetch(const TCameraUse& camera, Action action)
{
  TValueText encoding;
  if (encoding.ReadPresent(camera.CoreHandle(), Feature::kPixelEncoding) != VX_SUCCESS) return RC_NOT_SUPPORTED;
  const int width = ReadGeometry(camera.CoreHandle(), Feature::kAOIWidth);
  const int height = ReadGeometry(camera.CoreHandle(), Feature::kAOIHeight);
  const int stride = ReadGeometry(camera.CoreHandle(), Feature::kAOIStride);
  const std::shared_ptr<TDispatchQueue> queue = camera.Manager().SharedDispatchQueue();
  const auto with = [&](auto fetcher) { return action(fetcher); };

  if constexpr (std::is_same_v<Dst, unsigned char>) {
    if (encoding.Is(FeatureText::kMono8))
      return with(TUnpackedFetchImage<unsigned char, Dst>(queue.get(), width, height, stride));
  } else {
    if (encoding.Is(FeatureText::kMono12) || encoding.Is(FeatureText::kMono16))
      return with(TUnpackedFetchImage<unsigned short, Dst>(queue.get(), width, height, stride));
    if (encoding.Is(FeatureText::kMono12Packed))
      return with(TPackedFetchImage<unsigned char, Dst>(queue.get(), width, height, stride));
    if (encoding.Is(FeatureText::kMono8))
      return with(TUnpackedFetchImage<unsigned char, Dst>(queue.get(), width, height, stride));
    if (encoding.Is(FeatureText::kMono32))
      return with(TUnpackedFetchImage<int, Dst>(queue.get(), width, height, stride));
  }
  return Refuse(RC_NOT_SUPPORTED, "the camera encodes pixels as %ls, which do not go into %zu bits",
                encoding.Get(), 8 * sizeof(Dst));
}

template <class Dst>
unsigned int AcquiredData(Dst* array, unsigned long size)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (camera.Manager().IsRunningAfterLastFrame()) return RC_ACQUIRING;
  return Fetch<Dst>(camera, [=](auto& fetcher) { return fetcher.GetAcquiredData(array, size); });
}

template <class Dst>
unsigned int OldestImage(Dst* array, unsigned long size)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return Fetch<Dst>(camera, [&](auto& fetcher) {
    // The cursor moves before the copy, which may take long: a start or a second reader may move it meanwhile.
    int image = 0;
    const unsigned int code = camera.WithRetrievalCursor([&](int& cursor) {
      const unsigned int result = fetcher.MoveToNextOldestImage(array, size, cursor);
      image = cursor;
      return result;
    });
    if (code == RC_SUCCESS) fetcher.CopyImage(array, image);
    return code;
  });
}

template <class Dst>
unsigned int MostRecentImage(Dst* array, unsigned long size)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return Fetch<Dst>(camera, [=](auto& fetcher) { return fetcher.GetMostRecentImage(array, size); });
}

template <class Dst>
unsigned int Images(long first, long last, Dst* array, unsigned long size, long* validFirst, long* validLast)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  return Fetch<Dst>(
      camera, [=](auto& fetcher) { return fetcher.GetImages(first, last, array, size, validFirst, validLast); });
}

template <class Dst>
unsigned int IntactImage(long image, Dst* array, unsigned long size, long long* ticks)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  WriteOutput(ticks, 0);
  return Fetch<Dst>(camera, [=](auto& fetcher) { return fetcher.GetIntactImage(image, array, size, ticks); });
}

// More images than the type can count are reported as its maximum.
int ImageNumber(std::int64_t number)
{
  return static_cast<int>(std::min<std::int64_t>(number, std::numeric_limits<int>::max()));
}

} // namespace

unsigned int GetAcquiredData8(unsigned char* array, unsigned long size)
{
  return AcquiredData(array, size);
}

unsigned int GetAcquiredData16(unsigned short* array, unsigned long size)
{
  return AcquiredData(array, size);
}

unsigned int GetAcquiredData(int* array, unsigned long size)
{
  return AcquiredData(array, size);
}

unsigned int GetOldestImage8(unsigned char* array, unsigned long size)
{
  return OldestImage(array, size);
}

unsigned int GetOldestImage16(unsigned short* array, unsigned long size)
{
  return OldestImage(array, size);
}

unsigned int GetOldestImage(int* array, unsigned long size)
{
  return OldestImage(array, size);
}

unsigned int GetMostRecentImage8(unsigned char* array, unsigned long size)
{
  return MostRecentImage(array, size);
}

unsigned int GetMostRecentImage16(unsigned short* array, unsigned long size)
{
  return MostRecentImage(array, size);
}

unsigned int GetMostRecentImage(int* array, unsigned long size)
{
  return MostRecentImage(array, size);
}

unsigned int GetImages8(long first, long last, unsigned char* array, unsigned long size, long* validFirst,
                        long* validLast)
{
  return Images(first, last, array, size, validFirst, validLast);
}

unsigned int GetImages16(long first, long last, unsigned short* array, unsigned long size, long* validFirst,
                         long* validLast)
{
  return Images(first, last, array, size, validFirst, validLast);
}

unsigned int GetImages(long first, long last, int* array, unsigned long size, long* validFirst, long* validLast)
{
  return Images(first, last, array, size, validFirst, validLast);
}

unsigned int vxmcd_GetIntactImage8(long image, unsigned char* array, unsigned long size, long long* ticks)
{
  return IntactImage(image, array, size, ticks);
}

unsigned int vxmcd_GetIntactImage16(long image, unsigned short* array, unsigned long size, long long* ticks)
{
  return IntactImage(image, array, size, ticks);
}

unsigned int vxmcd_GetIntactImage(long image, int* array, unsigned long size, long long* ticks)
{
  return IntactImage(image, array, size, ticks);
}

unsigned int GetNumberAvailableImages(int* first, int* last)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  if (!first) return RC_P1_INVALID;
  if (!last) return RC_P2_INVALID;
  *first = 0;
  *last = 0;
  const auto queue = camera.Manager().SharedDispatchQueue();
  if (!queue || queue->GetMaximumImageAvailable() < 1) return RC_NO_NEW_DATA;
  *last = ImageNumber(queue->GetMaximumImageAvailable());
  *first = ImageNumber(queue->GetMinimumImageAvailable());
  return RC_SUCCESS;
}

unsigned int GetTotalNumberImagesAcquired(long* count)
{
  const TCameraUse camera;
  if (!camera) return RC_NOT_INITIALIZED;
  const auto queue = camera.Manager().SharedDispatchQueue();
  WriteOutput(count, queue ? queue->GetMaximumImageAvailable() : 0);
  return RC_SUCCESS;
}

} // namespace EntryPoint
