// SPDX-License-Identifier: MIT
// A camera of the GenICam standards while it is open.
#pragma once

#include "vxcore/backend/IDevice.h"
#include "vxcore/genicam/TAcquisition.h"
#include "vxcore/genicam/TGenICamConfiguration.h"
#include "vxcore/genicam/TImageArea.h"
#include "vxcore/genicam/TTriggerMode.h"

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vxgenicam {

using vxcore::IDevice;
using vxcore::IFeature;

/// What the threads of Aravis report of the connection to a camera, and what wakes a wait then. Shared with them, since
/// they may outlive the camera. Thread-safe.
struct TConnectionState
{
  explicit TConnectionState(std::string cameraAddress) : address(std::move(cameraAddress)) {}

  const std::string address; ///< for messages
  std::atomic<bool> isLost{false};
  std::shared_ptr<TWakeUp> wakeUp = std::make_shared<TWakeUp>();
};

/// Settings that the library emulates, and the pixels that it has chosen. Owned by TGenICamCamera; used under the device's
/// lock.
struct TEmulatedSettings
{
  EEncoding encoding = EEncoding::Mono8;
  EPixelFormat pixelFormat = EPixelFormat::Mono8;
  bool hasFormat = false; ///< the camera sends pixels that can be read
  bool hasMetadata = false;
  bool isFixed = false; ///< "CycleMode"
  long long frameCount = 1;
  long long accumulations = 1;
  int gainChannel = 0; ///< "PreAmpGainSelector", without effect
};

/// Drives one camera. Owned by the device table, borrows the backend's configuration; owns the connection. Locking as
/// IDevice says. A separate thread ends the connection to a camera that does not answer, since that takes seconds.
class TGenICamCamera final : public IDevice
{
public:
  /// Sets the camera to a known state: whole sensor, no trigger, nothing automatic.
  /// When it does not answer, it is lost at once.
  /// @param address  for messages
  TGenICamCamera(TObject<ArvDevice> device, std::string address, const TGenICamConfiguration& configuration);
  ~TGenICamCamera() override;
  TGenICamCamera(const TGenICamCamera&) = delete;
  TGenICamCamera& operator=(const TGenICamCamera&) = delete;

  int CheckPresent() override { return connection_->isLost ? VX_ERR_COMMUNICATION : VX_SUCCESS; }
  IFeature* Find(std::wstring_view name) override;
  int QueueBuffer(TDeviceLock& lock, unsigned char* buffer, int sizeBytes) override;
  int WaitBuffer(TDeviceLock& lock, unsigned char** buffer, int* sizeBytes, unsigned int timeoutMs) override;
  void Flush(TDeviceLock& lock) override;
  void Close(TDeviceLock& lock) override;

  // For the features; under the device's lock.
  TNodes& Nodes() { return nodes_; }
  /// How and where the camera is attached: "GigE Vision 192.168.1.20".
  std::string Description() const;
  /// "FeatureSources": a line for each feature that the camera has or may have, with tabs between: feature, origin, the
  /// camera's feature behind it, those that were looked for with commas between, scale, offset.
  std::string FeatureSources() const;
  TSource SourceOf(std::string_view feature) const { return configuration_.map.SourceOf(feature, nodes_); }
  TImageArea& Area() { return area_; }
  TTriggerMode& Trigger() { return trigger_; }
  const TAcquisition& Acquisition() const { return acquisition_; }
  TEmulatedSettings& Settings() { return settings_; }
  /// The best format that the camera offers now for images of the encoding; nothing without one.
  std::optional<EPixelFormat> FormatFor(EEncoding encoding) const;
  int SetEncoding(EEncoding encoding);
  int ImageSizeBytes() const;
  int Start();
  int Stop();
  int SendSoftwareTrigger();
  int ResetTicks();

private:
  void SetInitialState();
  std::optional<long long> TickFrequency() const;
  void ChooseEncoding();
  TRunSettings RunSettings() const;

  const std::string address_;
  const TGenICamConfiguration& configuration_;
  const std::shared_ptr<TConnectionState> connection_;
  TObject<ArvDevice> device_;
  TNodes nodes_;
  TImageArea area_;
  TTriggerMode trigger_;
  TAcquisition acquisition_;
  TEmulatedSettings settings_;
  std::map<std::wstring, std::unique_ptr<IFeature>, std::less<>> features_;
};

/// Makes the features that a camera has. They borrow the camera.
std::map<std::wstring, std::unique_ptr<IFeature>, std::less<>> MakeFeatures(TGenICamCamera& camera);

} // namespace vxgenicam
