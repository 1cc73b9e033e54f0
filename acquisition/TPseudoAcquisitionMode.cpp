// SPDX-License-Identifier: MIT
// The acquisition mode as programs know it, kept in step with manager and camera.
#include "acquisition/TPseudoAcquisitionMode.h"

#include "acquisition/TVxmcdAcquisitionManager.h"
#include "features/feature_names.h"
#include "features/IEnum.h"
#include "features/IInt.h"
#include "vxcore.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace {

struct TModeRow
{
  int mode;
  int runMode;
  const wchar_t* cycleMode;
  bool accumulates;
  bool isSeries;
};

constexpr TModeRow kModes[] = {
    {TPseudoAcquisitionMode::kSingleScan, TVxmcdAcquisitionManager::kSingleImage, FeatureText::kFixed, false,
     false},
    {TPseudoAcquisitionMode::kAccumulate, TVxmcdAcquisitionManager::kSingleImage, FeatureText::kFixed, true,
     false},
    {TPseudoAcquisitionMode::kKinetics, TVxmcdAcquisitionManager::kSeries, FeatureText::kFixed, true, true},
    {TPseudoAcquisitionMode::kRunTillAbort, TVxmcdAcquisitionManager::kUntilAborted, FeatureText::kContinuous,
     false, false},
};

const TModeRow* FindMode(int mode)
{
  const auto* row =
      std::find_if(std::begin(kModes), std::end(kModes), [mode](const TModeRow& r) { return r.mode == mode; });
  return row == std::end(kModes) ? nullptr : row;
}

int ToStatus(int code)
{
  switch (code) {
  case VX_SUCCESS:
    return TPseudoAcquisitionMode::kAccepted;
  case VX_ERR_NOT_IMPLEMENTED:
    return TPseudoAcquisitionMode::kNotSupported;
  case VX_ERR_NOT_AVAILABLE:
  case VX_ERR_NOT_WRITABLE:
    return TPseudoAcquisitionMode::kNotAvailableNow;
  default:
    return TPseudoAcquisitionMode::kRejected;
  }
}

bool IsProductInRange(int left, int right)
{
  return std::int64_t{left} * right <= std::numeric_limits<int>::max();
}

} // namespace

TPseudoAcquisitionMode::TPseudoAcquisitionMode(TVxmcdAcquisitionManager* manager, IEnum* pixelEncoding,
                                               IEnum* cycleMode, IInt* accumulateCount, IInt* frameCount)
    : manager_(manager),
      pixelEncoding_(pixelEncoding),
      cycleMode_(cycleMode),
      accumulateCount_(accumulateCount),
      frameCount_(frameCount)
{
}

int TPseudoAcquisitionMode::SetMode(int mode)
{
  if (!FindMode(mode)) return kRejected;
  const std::lock_guard lock(mutex_);
  mode_ = mode;
  Apply();
  return kAccepted;
}

int TPseudoAcquisitionMode::SetNumberAccumulations(int count)
{
  const std::lock_guard lock(mutex_);
  if (count < 1 || !IsProductInRange(count, kinetics_)) return kRejected;
  int present = 0;
  if (count > 1 && accumulateCount_->GetInt(present) == VX_ERR_NOT_IMPLEMENTED) return kNotSupported;

  const int before = accumulations_;
  accumulations_ = count;
  if (!FindMode(mode_)->accumulates) return kAccepted;
  const int status = Apply();
  if (status == kRejected) {
    accumulations_ = before;
    Apply();
  }
  return status;
}

int TPseudoAcquisitionMode::SetNumberKinetics(int count)
{
  const std::lock_guard lock(mutex_);
  if (count < 1 || !IsProductInRange(count, accumulations_)) return kRejected;
  const int before = kinetics_;
  kinetics_ = count;
  if (!FindMode(mode_)->isSeries) return kAccepted;
  const int status = Apply();
  if (status == kRejected) {
    kinetics_ = before;
    Apply();
  }
  return status;
}

int TPseudoAcquisitionMode::GetMode() const
{
  const std::lock_guard lock(mutex_);
  return mode_;
}

int TPseudoAcquisitionMode::GetNumberAccumulations() const
{
  const std::lock_guard lock(mutex_);
  return accumulations_;
}

int TPseudoAcquisitionMode::GetSeriesLength() const
{
  const std::lock_guard lock(mutex_);
  if (mode_ == kRunTillAbort) return std::numeric_limits<int>::max();
  return FindMode(mode_)->isSeries ? kinetics_ : 1;
}

void TPseudoAcquisitionMode::ApplyPending()
{
  const std::lock_guard lock(mutex_);
  if (!pending_) return;
  manager_->Stop();
  Apply();
}

// Tells the manager and the camera; the first setting that the camera does not take decides the answer.
int TPseudoAcquisitionMode::Apply()
{
  const TModeRow& row = *FindMode(mode_);
  manager_->SetRunMode(row.runMode);
  manager_->SetImageCount(row.isSeries ? kinetics_ : 1);

  const int cycleStatus = ToStatus(cycleMode_->SetString(row.cycleMode));
  const int countStatus = WriteCounts();
  WriteEncoding();
  pending_ = cycleStatus == kNotAvailableNow || countStatus == kNotAvailableNow;
  return countStatus;
}

int TPseudoAcquisitionMode::ExposuresPerImage() const
{
  return FindMode(mode_)->accumulates ? accumulations_ : 1;
}

int TPseudoAcquisitionMode::WriteCounts()
{
  const int exposures = ExposuresPerImage();
  const int accumulateStatus = ToStatus(accumulateCount_->SetInt(exposures));
  // A camera that cannot accumulate takes one exposure an image anyway.
  const bool irrelevant = accumulateStatus == kNotSupported && exposures == 1;
  if (accumulateStatus != kAccepted && !irrelevant) return accumulateStatus;
  if (mode_ == kRunTillAbort) return kAccepted;

  const int images = FindMode(mode_)->isSeries ? kinetics_ : 1;
  return ToStatus(frameCount_->SetInt(images * exposures));
}

// Sums of exposures need more bits than one exposure has.
void TPseudoAcquisitionMode::WriteEncoding()
{
  const bool accumulates = ExposuresPerImage() > 1;
  if (accumulates && encodingBefore_.empty() && IsMono32Offered()) {
    std::wstring present;
    if (pixelEncoding_->GetString(present) != VX_SUCCESS || present == FeatureText::kMono32) return;
    if (pixelEncoding_->SetString(FeatureText::kMono32) == VX_SUCCESS) encodingBefore_ = present;
  } else if (!accumulates && !encodingBefore_.empty()) {
    if (pixelEncoding_->SetString(encodingBefore_) == VX_SUCCESS) encodingBefore_.clear();
  }
}

bool TPseudoAcquisitionMode::IsMono32Offered()
{
  int count = 0;
  if (pixelEncoding_->GetCount(count) != VX_SUCCESS) return false;
  for (int index = 0; index < count; ++index) {
    std::wstring text;
    if (pixelEncoding_->GetStringByIndex(index, text) != VX_SUCCESS) return false;
    if (text != FeatureText::kMono32) continue;
    bool available = false;
    return pixelEncoding_->IsIndexAvailable(index, available) == VX_SUCCESS && available;
  }
  return false;
}
