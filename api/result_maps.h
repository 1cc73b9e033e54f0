// SPDX-License-Identifier: MIT
// The result codes for the answers of the feature library and for the statuses of our classes.
#pragma once

#include "acquisition/TPseudoAcquisitionMode.h"
#include "acquisition/TVxmcdAcquisitionManager.h"
#include "features/feature_access.h"
#include "features/readout_interfaces.h"
#include "features/TPseudoBaselineClamp.h"
#include "service/TI2c.h"
#include "vxmcd_result_codes.h"

/// Rows of a status and its code. Without a row, 0 is RC_SUCCESS, as it means success everywhere, and any other status
/// is @p failCode.
struct TResultMap
{
  struct TRow
  {
    int status = 0;
    unsigned int code = RC_SUCCESS;
  };

  unsigned int failCode;
  TRow rows[4];
};

constexpr unsigned int ToResultCode(int status, unsigned int failCode)
{
  return status == 0 ? static_cast<unsigned int>(RC_SUCCESS) : failCode;
}

constexpr unsigned int ToResultCode(int status, const TResultMap& map)
{
  for (const TResultMap::TRow& row : map.rows)
    if (row.status == status) return row.code;
  return ToResultCode(status, map.failCode);
}

/// One map for each operation that distinguishes failures. They differ from each other: callers rely on each as it is.
namespace ResultMap {

// Answers of the feature library.
inline constexpr TResultMap kExposureTime{RC_P1_INVALID, {{VX_ERR_NOT_WRITABLE, RC_NOT_AVAILABLE}}};
inline constexpr TResultMap kReadoutTime{RC_P1_INVALID, {{VX_ERR_NOT_AVAILABLE, RC_NOT_AVAILABLE}}};
inline constexpr TResultMap kTargetTemperature{RC_P1_INVALID, {{VX_ERR_NOT_READABLE, RC_NOT_AVAILABLE}}};
inline constexpr TResultMap kSwitch{RC_SUCCESS,
                                    {{VX_ERR_NOT_IMPLEMENTED, RC_NOT_SUPPORTED},
                                     {VX_ERR_NOT_READABLE, RC_NOT_AVAILABLE},
                                     {VX_ERR_NOT_WRITABLE, RC_NOT_AVAILABLE},
                                     {VX_ERR_OUT_OF_RANGE, RC_P1_INVALID}}};
inline constexpr TResultMap kBaselineClamp{RC_P1_INVALID,
                                           {{TPseudoBaselineClamp::kNotAvailableNow, RC_NOT_AVAILABLE},
                                            {TPseudoBaselineClamp::kNotImplemented, RC_NOT_SUPPORTED}}};

// The index of "TemperatureStatus".
inline constexpr TResultMap kCoolingState{
    RC_TEMP_NOT_REACHED,
    {{0, RC_TEMP_OFF}, {1, RC_TEMP_STABILIZED}, {3, RC_TEMP_DRIFT}, {4, RC_TEMP_NOT_STABILIZED}}};

// Which argument is the wrong one.
inline constexpr TResultMap kChannel{RC_SUCCESS, {{IADChannel::kNoSuchChannel, RC_P1_INVALID}}};
inline constexpr TResultMap kAmplifier{RC_SUCCESS, {{IAmplifier::kNoSuchAmplifier, RC_P1_INVALID}}};
inline constexpr TResultMap kSetSpeed{
    RC_SUCCESS, {{IHSSpeed::kNoSuchAmplifier, RC_P1_INVALID}, {IHSSpeed::kNoSuchSpeed, RC_P2_INVALID}}};
inline constexpr TResultMap kGetSpeed{RC_SUCCESS,
                                      {{IHSSpeed::kNoSuchChannel, RC_P1_INVALID},
                                       {IHSSpeed::kNoSuchAmplifier, RC_P2_INVALID},
                                       {IHSSpeed::kNoSuchSpeed, RC_P3_INVALID}}};
inline constexpr TResultMap kGain{RC_SUCCESS, {{IPreAmpGain::kNoSuchGain, RC_P1_INVALID}}};
inline constexpr TResultMap kGainAvailable{RC_SUCCESS,
                                           {{IPreAmpGain::kNoSuchChannel, RC_P1_INVALID},
                                            {IPreAmpGain::kNoSuchAmplifier, RC_P2_INVALID},
                                            {IPreAmpGain::kNoSuchSpeed, RC_P3_INVALID},
                                            {IPreAmpGain::kNoSuchGain, RC_P4_INVALID}}};

// Modes, counts and runs.
inline constexpr TResultMap kAcquisitionMode{RC_SUCCESS, {{TPseudoAcquisitionMode::kRejected, RC_P1_INVALID}}};
inline constexpr TResultMap kAccumulations{RC_P1_INVALID,
                                           {{TPseudoAcquisitionMode::kNotSupported, RC_NOT_SUPPORTED},
                                            {TPseudoAcquisitionMode::kNotAvailableNow, RC_NOT_AVAILABLE}}};
inline constexpr TResultMap kSeriesLength{RC_P1_INVALID,
                                          {{TPseudoAcquisitionMode::kNotSupported, RC_NOT_SUPPORTED},
                                           {TPseudoAcquisitionMode::kNotAvailableNow, RC_SUCCESS}}};
inline constexpr TResultMap kStart{RC_SUCCESS,
                                   {{TVxmcdAcquisitionManager::kAlreadyAcquiring, RC_ACQUIRING},
                                    {TVxmcdAcquisitionManager::kCommandFailed, RC_FEATURE_ERROR},
                                    {TVxmcdAcquisitionManager::kStartFailed, RC_FRAME_UNAVAILABLE},
                                    {TVxmcdAcquisitionManager::kStartThrew, RC_START_REFUSED}}};
inline constexpr TResultMap kAbort{RC_SUCCESS,
                                   {{TVxmcdAcquisitionManager::kNotAcquiring, RC_IDLE},
                                    {TVxmcdAcquisitionManager::kCommandFailed, RC_FEATURE_ERROR}}};

// Transfers.
inline constexpr TResultMap kI2c{RC_I2C_ERROR,
                                 {{TI2c::kAddressRefused, RC_P1_INVALID}, {TI2c::kCountRefused, RC_P2_INVALID}}};

} // namespace ResultMap
