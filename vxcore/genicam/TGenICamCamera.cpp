// SPDX-License-Identifier: MIT
// A camera of the GenICam standards.
#include "vxcore/genicam/TGenICamCamera.h"

#include "utility/utf8.h"
#include "vxcore/genicam/log.h"

#include <algorithm>
#include <cstdio>
#include <limits>
#include <set>
#include <thread>

namespace vxgenicam {

namespace {

constexpr const char* kGevTimestampValue = "GevTimestampValue"; ///< of older cameras, in ticks of their clock

void OnControlLost(ArvDevice*, gpointer data)
{
  auto* const connection = static_cast<TConnectionState*>(data);
  if (!connection->isLost.exchange(true))
    Log(ELog::Error, "%s: the camera does not answer any more", connection->address.c_str());
  connection->wakeUp->Wake();
}

} // namespace

TGenICamCamera::TGenICamCamera(TObject<ArvDevice> device, std::string address,
                               const TGenICamConfiguration& configuration)
    : address_(std::move(address)),
      configuration_(configuration),
      connection_(std::make_shared<TConnectionState>(address_)),
      device_(std::move(device)),
      nodes_(device_.get()),
      area_(nodes_, configuration.map),
      trigger_(nodes_, configuration.line),
      acquisition_(connection_->wakeUp)
{
  g_signal_connect(device_.get(), "control-lost", G_CALLBACK(OnControlLost), connection_.get());
  SetInitialState();
  features_ = MakeFeatures(*this);
  // The connection may have been lost before the signal was connected.
  const bool isControlled =
      !ARV_IS_GV_DEVICE(device_.get()) || arv_gv_device_is_controller(ARV_GV_DEVICE(device_.get()));
  if (!nodes_.EndOpening() || !isControlled) connection_->isLost = true;
}

TGenICamCamera::~TGenICamCamera()
{
  if (!connection_->isLost) {
    g_signal_handlers_disconnect_by_data(device_.get(), connection_.get());
    return;
  }
  // The state lives as long as the connection, whose threads use it.
  std::thread([stream = acquisition_.TakeStream(), device = std::move(device_),
               connection = connection_]() mutable {
    stream.reset();
    device.reset();
  }).detach();
}

void TGenICamCamera::SetInitialState()
{
  arv_device_set_access_check_policy(device_.get(), ARV_ACCESS_CHECK_POLICY_ENABLE);
  // A check of ranges by Aravis fails on valid descriptions; TNodes checks them.
  arv_device_set_range_check_policy(device_.get(), ARV_RANGE_CHECK_POLICY_DISABLE);
  for (const auto& [node, text] :
       {std::pair("AcquisitionMode", "Continuous"), {"ExposureAuto", "Off"}, {"GainAuto", "Off"}})
    if (nodes_.HasEntry(node, text)) nodes_.SetText(node, text);
  if (nodes_.Has("ChunkModeActive")) nodes_.SetSwitch("ChunkModeActive", false);
  if (const int code = trigger_.Set(TTriggerMode::Internal); code != VX_SUCCESS)
    Log(ELog::Warning, "%s: the triggers cannot be switched off (%d)", address_.c_str(), code);
  if (const int code = area_.Reset(); code != VX_SUCCESS)
    Log(ELog::Warning, "%s: the whole sensor cannot be set (%d)", address_.c_str(), code);
  ChooseEncoding();
}

std::string TGenICamCamera::Description() const
{
  if (ARV_IS_GV_DEVICE(device_.get())) return "GigE Vision " + address_;
  if (ARV_IS_UV_DEVICE(device_.get())) return "USB3 Vision " + address_.substr(address_.find(':') + 1);
  return "simulated by Aravis, " + address_;
}

std::string TGenICamCamera::FeatureSources() const
{
  std::set<std::string> names;
  for (const TMapRow& row : kMapRows) names.insert(row.name);
  for (const auto& [name, feature] : features_) names.insert(ToUtf8(name));
  std::string text;
  for (const std::string& name : names) {
    const TSource source = SourceOf(name);
    const bool isReplacement = !source && features_.contains(FromUtf8(name)); // made of other features
    std::string candidates;
    for (const std::string& candidate : configuration_.map.NamesFor(name))
      candidates += (candidates.empty() ? "" : ",") + candidate;
    char numbers[64];
    std::snprintf(numbers, sizeof numbers, "\t%.12g\t%.12g\n", source.scale, source.offset);
    const char* const origin = NameOf(isReplacement ? EOrigin::Emulated : configuration_.map.OriginOf(name));
    text.append(name).append("\t").append(origin).append("\t").append(source.node);
    text.append("\t").append(candidates).append(numbers);
  }
  return text;
}

/// The encoding of the pixels that the camera sends now, or else the widest that it can send.
void TGenICamCamera::ChooseEncoding()
{
  std::string name;
  nodes_.GetText(SourceOf("PixelEncoding").node, name);
  const auto present = PixelFormatOf(name);
  for (int index = 0; present && index < kEncodingCount - 1; ++index) {
    const auto encoding = static_cast<EEncoding>(index);
    if (SourcesOf(encoding).front() == *present && SetEncoding(encoding) == VX_SUCCESS) return;
  }
  for (const EEncoding encoding : {EEncoding::Mono16, EEncoding::Mono12, EEncoding::Mono8})
    if (FormatFor(encoding) && SetEncoding(encoding) == VX_SUCCESS) return;
  Log(ELog::Error, "%s: the camera's pixels (%s) are none of those that can be read", address_.c_str(),
      name.c_str());
}

std::optional<EPixelFormat> TGenICamCamera::FormatFor(EEncoding encoding) const
{
  const TSource source = SourceOf("PixelEncoding");
  for (const EPixelFormat format : SourcesOf(encoding))
    if (nodes_.HasEntry(source.node, NameOf(format))) return format;
  return std::nullopt;
}

int TGenICamCamera::SetEncoding(EEncoding encoding)
{
  const auto format = FormatFor(encoding);
  if (!format) return VX_ERR_INDEX_NOT_AVAILABLE;
  const TSource source = SourceOf("PixelEncoding");
  std::string present;
  const bool isSet = nodes_.GetText(source.node, present) == VX_SUCCESS && present == NameOf(*format);
  if (!isSet) {
    if (const int code = nodes_.SetText(source.node, NameOf(*format)); code != VX_SUCCESS) return code;
  }
  settings_.encoding = encoding;
  settings_.pixelFormat = *format;
  settings_.hasFormat = true;
  return VX_SUCCESS;
}

int TGenICamCamera::ImageSizeBytes() const
{
  const auto width = static_cast<std::size_t>(area_.Side(TImageArea::Horizontal));
  const auto height = static_cast<std::size_t>(area_.Side(TImageArea::Vertical));
  const std::size_t bytes = DeliveredBytes(StrideOf(settings_.encoding, width) * height, settings_.hasMetadata);
  return static_cast<int>(std::min(bytes, static_cast<std::size_t>(std::numeric_limits<int>::max())));
}

TRunSettings TGenICamCamera::RunSettings() const
{
  TRunSettings run;
  run.encoding = settings_.encoding;
  run.hasMetadata = settings_.hasMetadata;
  run.accumulations = settings_.accumulations;
  if (settings_.isFixed) run.images = settings_.frameCount;
  // A frame that is dropped is replaced by the next one, unless each waits for a pulse: then one would be missing.
  run.incomplete =
      configuration_.incomplete.value_or(trigger_.IsPulseForEach() ? EIncomplete::Deliver : EIncomplete::Drop);
  return run;
}

int TGenICamCamera::Start()
{
  if (acquisition_.IsRunning()) return VX_ERR_START_REFUSED;
  std::string reason = "its pixels are none of those that can be read";
  TFrameShape shape;
  TCrop crop;
  int code = settings_.hasFormat ? area_.ReadShape(settings_.pixelFormat, shape, crop) : VX_ERR_START_REFUSED;
  if (code == VX_SUCCESS) {
    long long payload = 0;
    nodes_.GetInteger("PayloadSize", payload);
    code = acquisition_.Start(device_.get(), configuration_.stream, RunSettings(), shape, crop,
                              static_cast<std::size_t>(std::max(payload, 0LL)), reason);
  } else if (settings_.hasFormat)
    reason = code == VX_ERR_START_REFUSED ? "the area that it sends is not the one that was set"
                                          : "the size of its images cannot be read";
  if (code == VX_SUCCESS) {
    if (nodes_.Has("TLParamsLocked")) nodes_.SetInteger("TLParamsLocked", 1);
    code = nodes_.Execute(SourceOf("AcquisitionStart").node);
    if (code == VX_SUCCESS) return code;
    reason = code == VX_ERR_COMMUNICATION ? "it does not answer" : "it refuses the command";
    if (code == VX_ERR_COMMUNICATION)
      acquisition_.Stop();
    else
      Stop();
  }
  Log(ELog::Error, "%s: the camera cannot be started: %s (%d)", address_.c_str(), reason.c_str(), code);
  return VX_ERR_START_REFUSED; // callers wait for images after any other code
}

int TGenICamCamera::Stop()
{
  if (!acquisition_.IsRunning()) return VX_SUCCESS;
  acquisition_.Stop();
  if (connection_->isLost) return VX_ERR_COMMUNICATION;
  nodes_.EndSilence(); // what was asked before does not end the connection
  const int code = nodes_.Execute(SourceOf("AcquisitionStop").node);
  if (code == VX_ERR_COMMUNICATION) {
    // Aravis has tried it for seconds; every further call would take as long.
    connection_->isLost = true;
    return code;
  }
  if (nodes_.Has("TLParamsLocked")) nodes_.SetInteger("TLParamsLocked", 0);
  return code;
}

int TGenICamCamera::SendSoftwareTrigger()
{
  if (!acquisition_.IsRunning() || trigger_.Mode() != TTriggerMode::Software) return VX_ERR_NOT_WRITABLE;
  return nodes_.Execute(SourceOf("SoftwareTrigger").node);
}

/// Ticks of a second of the camera's clock, if it is a network camera.
std::optional<long long> TGenICamCamera::TickFrequency() const
{
  if (!ARV_IS_GV_DEVICE(device_.get())) return std::nullopt;
  TError error;
  const guint64 ticks = arv_gv_device_get_timestamp_tick_frequency(ARV_GV_DEVICE(device_.get()), error.Out());
  return ticks > 0 && ticks <= static_cast<guint64>(kTicksPerSecond) ? std::optional(static_cast<long long>(ticks))
                                                                     : std::nullopt;
}

/// Makes ticks count from now: by the camera's own reset, from its clock as it is read now, or else from the next frame.
int TGenICamCamera::ResetTicks()
{
  if (const TSource reset = SourceOf("TimestampClockReset"); reset && nodes_.Execute(reset.node) == VX_SUCCESS) {
    acquisition_.ResetTicks(0);
    return VX_SUCCESS;
  }
  const std::string latch = nodes_.FirstOf({"TimestampLatch", "GevTimestampControlLatch"});
  const std::string value = nodes_.FirstOf({"TimestampLatchValue", kGevTimestampValue});
  const std::optional<long long> frequency = value == kGevTimestampValue ? TickFrequency() : kTicksPerSecond;
  long long now = 0;
  if (frequency && !latch.empty() && nodes_.Execute(latch) == VX_SUCCESS &&
      nodes_.GetInteger(value, now) == VX_SUCCESS)
    acquisition_.ResetTicks(now / *frequency * kTicksPerSecond + now % *frequency * kTicksPerSecond / *frequency);
  else
    acquisition_.ResetTicksWithFrame();
  return VX_SUCCESS;
}

IFeature* TGenICamCamera::Find(std::wstring_view name)
{
  const auto found = features_.find(name);
  return found == features_.end() ? nullptr : found->second.get();
}

int TGenICamCamera::QueueBuffer(TDeviceLock&, unsigned char* buffer, int sizeBytes)
{
  if (sizeBytes < ImageSizeBytes()) return VX_ERR_BUFFER_TOO_SMALL;
  acquisition_.Queue(buffer, sizeBytes);
  return VX_SUCCESS;
}

int TGenICamCamera::WaitBuffer(TDeviceLock& lock, unsigned char** buffer, int* sizeBytes, unsigned int timeoutMs)
{
  return acquisition_.Wait(lock, buffer, sizeBytes, timeoutMs, [this] {
    if (!connection_->isLost) return VX_SUCCESS;
    // A caller that waits for a pulse waits without limit: it would never learn that none can come.
    return acquisition_.IsRunning() && trigger_.IsPulseForEach() ? VX_ERR_HARDWARE_OVERFLOW : VX_ERR_COMMUNICATION;
  });
}

void TGenICamCamera::Flush(TDeviceLock&)
{
  acquisition_.Flush();
}

void TGenICamCamera::Close(TDeviceLock& lock)
{
  Stop();
  acquisition_.Close(lock);
}

} // namespace vxgenicam
