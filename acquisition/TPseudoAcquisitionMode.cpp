// SPDX-License-Identifier: MIT
// The acquisition mode as programs know it, kept in step with manager and camera.
#include "acquisition/TPseudoAcquisitionMode.h"

#include "acquisition/TVxmcdAcquisitionManager.h"
#include "features/feature_access.h"
#include "features/feature_interfaces.h"
#include "features/feature_names.h"
#include "utility/TCallNotes.h"
#include "utility/TQuorinLibDebugOutput.h"

#include <algorithm>
#include <cstdint>
#include <limits>

using QuorinUtility::TQuorinLibDebugOutput;

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

bool IsImplemented(IInt& feature)
{
  int present = 0;
  return feature.GetInt(present) != VX_ERR_NOT_IMPLEMENTED;
}

// The camera may lack the count if @p mayLack, and need not accept a write of the value that it has already.
int WriteCount(IInt& feature, int count, bool mayLack)
{
  const int status = ToStatus(feature.SetInt(count));
  if (status == TPseudoAcquisitionMode::kNotSupported && mayLack) return TPseudoAcquisitionMode::kAccepted;
  int present = 0;
  const bool isThere = status == TPseudoAcquisitionMode::kNotAvailableNow &&
                       feature.GetInt(present) == VX_SUCCESS && present == count;
  return isThere ? TPseudoAcquisitionMode::kAccepted : status;
}

// Whether a count can be used together with the other one.
bool IsCount(int count, int other)
{
  if (count >= 1 && std::int64_t{count} * other <= std::numeric_limits<int>::max()) return true;
  TCallNotes::AddDetail("a count begins at 1, and accumulations times images end at %d",
                        std::numeric_limits<int>::max());
  return false;
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
  if (!FindMode(mode)) {
    TCallNotes::AddDetail("the acquisition modes are %d, %d, %d and %d", kSingleScan, kAccumulate, kKinetics,
                          kRunTillAbort);
    return kRejected;
  }
  const TLock lock(mutex_);
  const int before = mode_;
  mode_ = mode;
  const int status = Settle(Apply(), mode_, before);
  return status == kNotSupported ? kRejected : status;
}

int TPseudoAcquisitionMode::SetNumberAccumulations(int count)
{
  const TLock lock(mutex_);
  if (!IsCount(count, kinetics_)) return kRejected;
  if (count > 1 && !IsImplemented(*accumulateCount_)) return kNotSupported;

  const int before = accumulations_;
  accumulations_ = count;
  if (!FindMode(mode_)->accumulates) return kAccepted;
  return Settle(Apply(), accumulations_, before);
}

int TPseudoAcquisitionMode::SetNumberKinetics(int count)
{
  const TLock lock(mutex_);
  if (!IsCount(count, accumulations_)) return kRejected;
  if (count > 1 && !IsImplemented(*frameCount_)) return kNotSupported;

  const int before = kinetics_;
  kinetics_ = count;
  if (!FindMode(mode_)->isSeries) return kAccepted;
  return Settle(Apply(), kinetics_, before);
}

// A setting that the camera refuses is replaced by the one before, in the camera too.
int TPseudoAcquisitionMode::Settle(int status, int& setting, int before)
{
  if (status == kAccepted || status == kNotAvailableNow) return status;
  setting = before;
  Apply();
  return status;
}

int TPseudoAcquisitionMode::GetMode() const
{
  const TLock lock(mutex_);
  return mode_;
}

int TPseudoAcquisitionMode::GetNumberAccumulations() const
{
  const TLock lock(mutex_);
  return accumulations_;
}

int TPseudoAcquisitionMode::GetSeriesLength() const
{
  const TLock lock(mutex_);
  if (mode_ == kRunTillAbort) return std::numeric_limits<int>::max();
  return FindMode(mode_)->isSeries ? kinetics_ : 1;
}

int TPseudoAcquisitionMode::ApplyPending()
{
  {
    const TLock lock(mutex_);
    if (!pending_) return kAccepted;
  }
  // Without the lock: it may take long, and other threads read the settings meanwhile.
  if (!manager_->FinishDeliveredRun()) return kNotAvailableNow;
  const TLock lock(mutex_);
  if (!pending_) return kAccepted;
  manager_->Stop();
  const int status = Apply();
  pending_ = pending_ || status != kAccepted;
  if (status != kAccepted)
    TQuorinLibDebugOutput::Output(
        __FILE__, __LINE__, __func__,
        "the camera does not take mode %d with %d accumulations and %d images: status %d", mode_, accumulations_,
        kinetics_, status);
  return status;
}

// Writes the settings to manager and camera; the first one that the camera refuses decides the result.
int TPseudoAcquisitionMode::Apply()
{
  const TModeRow& row = *FindMode(mode_);
  manager_->SetRunMode(row.runMode);
  manager_->SetImageCount(row.isSeries ? kinetics_ : 1);

  const int cycleStatus = WriteCycleMode(row.cycleMode);
  const int countStatus = WriteCounts();
  WriteEncoding();
  pending_ = cycleStatus == kNotAvailableNow || countStatus == kNotAvailableNow;
  if (countStatus != kAccepted) return countStatus;
  // Finite runs are ended by the acquisition thread, in every cycle mode.
  return mode_ == kRunTillAbort ? cycleStatus : kAccepted;
}

int TPseudoAcquisitionMode::WriteCycleMode(const wchar_t* text)
{
  const int status = ToStatus(cycleMode_->SetString(text));
  if (status == kAccepted || status == kNotSupported) return kAccepted;
  std::wstring present;
  return cycleMode_->GetString(present) == VX_SUCCESS && present == text ? kAccepted : status;
}

int TPseudoAcquisitionMode::ExposuresPerImage() const
{
  return FindMode(mode_)->accumulates ? accumulations_ : 1;
}

// A camera without a count has a count of one.
int TPseudoAcquisitionMode::WriteCounts()
{
  const int exposures = ExposuresPerImage();
  const int accumulateStatus = WriteCount(*accumulateCount_, exposures, exposures == 1);
  if (accumulateStatus != kAccepted || mode_ == kRunTillAbort) return accumulateStatus;
  const int images = FindMode(mode_)->isSeries ? kinetics_ : 1;
  return WriteCount(*frameCount_, images * exposures, images == 1);
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
