// SPDX-License-Identifier: MIT
// A simulated camera while it is open.
#pragma once

#include "vxcore/backend/IDeviceBackend.h"
#include "vxcore/simulated/TAcquisition.h"
#include "vxcore/simulated/TCameraState.h"
#include "vxcore/simulated/TDeviceStatus.h"
#include "vxcore/simulated/TFeatureSet.h"

namespace vxsim {

using vxcore::IDevice;
using vxcore::TDeviceContext;

/// The device that the simulator offers: settings, features over them, and an acquisition. Known to its backend
/// while it is open (TDeviceStatus::camera). Locking as IDevice says.
class TSimulatedCamera final : public IDevice
{
public:
  TSimulatedCamera(const TCameraModel& model, const TCameraConfiguration& configuration, TDeviceStatus& status,
                   const TDeviceContext& context);

  /// Builds the features. False, with a message, when the configuration does not fit the model.
  bool Build(std::string& error);

  int CheckPresent() override;
  IFeature* Find(std::wstring_view name) override { return features_.Find(name); }
  int QueueBuffer(TDeviceLock& lock, unsigned char* buffer, int sizeBytes) override;
  int WaitBuffer(TDeviceLock& lock, unsigned char** buffer, int* sizeBytes, unsigned int timeoutMs) override;
  void Flush(TDeviceLock& lock) override { acquisition_.Flush(lock); }
  void Close(TDeviceLock& lock) override;
  bool AppliesFrameFaults() const override { return true; }

  // What the control functions reach.
  TAcquisition& Acquisition() { return acquisition_; }
  /// A pulse on the external trigger input.
  void FireTrigger();

private:
  bool PopulateBuses(std::string& error);
  void PopulateRegisters();
  std::unique_ptr<II2cDevice> MakeI2cDevice(const TModelI2cDevice& device);

  TDeviceStatus& status_;
  std::map<int, const TPotentiometer*> firstPotentiometers_; ///< by bus
  TCameraState state_;
  TFeatureSet features_;
  TAcquisition acquisition_;
};

} // namespace vxsim
