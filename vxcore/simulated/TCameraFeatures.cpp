// SPDX-License-Identifier: MIT
// The table of features: what each reads, writes and depends on; which families of models have it.
#include "vxcore/simulated/TCameraFeatures.h"

#include "utility/utf8.h"
#include "vxcore/backend/configuration_text.h"
#include "vxcore/simulated/feature_rows.h"
#include "vxcore/simulated/TEnumFeature.h"
#include "vxcore/simulated/TFrameTiming.h"

#include <algorithm>
#include <climits>
#include <cwchar>
#include <span>

namespace vxsim {

using namespace vxcore;

namespace {

constexpr long long kMaxBaselineCounts = 500;
constexpr long long kMaxSensorPixels = 16384;
constexpr long long kMaxAccumulations = 100000;

// Checked beside the limits, which a configuration may set to anything, so that nothing is divided by 0 or read
// beyond its end.
bool IsSizeOnSensor(long long size)
{
  return size >= 1 && size <= kMaxSensorPixels;
}

bool IsTwelveBits(EPixelEncoding encoding)
{
  return encoding == EPixelEncoding::Mono12 || encoding == EPixelEncoding::Mono12Packed;
}

std::unique_ptr<IFeature> MakeAoiLeft(const TBuild& b)
{
  TCameraState& s = b.state;
  return b.Int(b.IdleOnly(),
               {.get = [&s] { return s.Columns().left; },
                .set = [&s](long long v) { s.Columns().left = v; },
                .minimum = [] { return 1LL; },
                .maximum = [&s] { return s.sensorWidth - s.Columns().width * s.Columns().bin + 1; }});
}

std::unique_ptr<IFeature> MakeAoiTop(const TBuild& b)
{
  TCameraState& s = b.state;
  const auto set = [&s](long long v) {
    if (!s.IsTracks())
      s.top = v;
    else
      s.SelectedTrack() = {v, std::clamp(s.sensorHeight - v + 1, 1LL, s.SelectedTrack().rows)};
  };
  const auto maximum = [&s] {
    return s.IsTracks() ? s.sensorHeight : s.sensorHeight - s.height * s.verticalBin + 1;
  };
  return b.Int(b.IdleOnly(), {.get = [&s] { return s.IsTracks() ? s.SelectedTrack().top : s.top; },
                              .set = set,
                              .minimum = [] { return 1LL; },
                              .maximum = maximum,
                              .accepts = IsSizeOnSensor});
}

/// The width may be as large as the sensor wherever the area begins: the area then moves to the left to fit.
std::unique_ptr<IFeature> MakeAoiWidth(const TBuild& b)
{
  TCameraState& s = b.state;
  const auto set = [&s](long long v) {
    s.Columns().width = v;
    s.FitArea();
  };
  return b.Int(b.IdleOnly(), {.get = [&s] { return s.Columns().width; },
                              .set = set,
                              .minimum = [] { return 1LL; },
                              .maximum = [&s] { return s.sensorWidth / s.Columns().bin; }});
}

std::unique_ptr<IFeature> MakeAoiHeight(const TBuild& b)
{
  TCameraState& s = b.state;
  TFeatureAccess access = b.IdleOnly();
  access.writable = [&s] { return !s.acquiring && !s.IsTracks(); }; // tracks are one binned row each
  const auto set = [&s](long long v) {
    s.height = v;
    s.FitArea();
  };
  return b.Int(std::move(access), {.get = [&s] { return s.OutputRows(); },
                                   .set = set,
                                   .minimum = [] { return 1LL; },
                                   .maximum = [&s] { return s.sensorHeight / s.verticalBin; }});
}

long long MaximumHBin(const TCameraState& state)
{
  return std::min<long long>(state.model.maximumBinning, state.sensorWidth);
}

long long MaximumVBin(const TCameraState& state)
{
  return std::min<long long>(state.model.maximumBinning, state.sensorHeight);
}

std::unique_ptr<IFeature> MakeAoiHBin(const TBuild& b)
{
  TCameraState& s = b.state;
  const auto set = [&s](long long v) {
    s.Columns().bin = v; // of all tracks: the rows of a frame are of one width
    s.FitArea();
  };
  return b.Int(b.IdleOnly(), {.get = [&s] { return s.Columns().bin; },
                              .set = set,
                              .minimum = [] { return 1LL; },
                              .maximum = [&s] { return MaximumHBin(s); },
                              .accepts = IsSizeOnSensor});
}

std::unique_ptr<IFeature> MakeAoiVBin(const TBuild& b)
{
  TCameraState& s = b.state;
  const auto set = [&s](long long v) {
    if (s.IsTracks())
      s.SelectedTrack().rows = v;
    else
      s.verticalBin = v;
    s.FitArea();
  };
  const auto maximum = [&s]() -> long long {
    return s.IsTracks() ? s.sensorHeight - s.SelectedTrack().top + 1 : MaximumVBin(s);
  };
  TFeatureAccess access = b.IdleOnly();
  if ((s.model.families & Family::kFreeBinning) == 0) access.available = [&s] { return s.IsTracks(); };
  return b.Int(std::move(access), {.get = [&s] { return s.IsTracks() ? s.SelectedTrack().rows : s.verticalBin; },
                                   .set = set,
                                   .minimum = [] { return 1LL; },
                                   .maximum = maximum,
                                   .accepts = IsSizeOnSensor});
}

/// The binning of the sensor itself, whose maximum is what the camera can do.
std::unique_ptr<IFeature> MakeBinInternal(const TBuild& b, std::function<long long()> bin,
                                          std::function<long long()> maximum)
{
  return b.Int(b.Access(),
               {.get = std::move(bin), .set = {}, .minimum = [] { return 1LL; }, .maximum = std::move(maximum)});
}

std::unique_ptr<IFeature> MakeAoiCount(const TBuild& b)
{
  TCameraState& s = b.state;
  TFeatureAccess access = b.IdleOnly();
  access.available = [&s] { return s.IsTracks(); };
  const auto set = [&s](long long v) {
    s.tracks.resize(static_cast<size_t>(v));
    s.selectedTrack = std::min(s.selectedTrack, v);
  };
  return b.Int(std::move(access), {.get = [&s] { return static_cast<long long>(s.tracks.size()); },
                                   .set = set,
                                   .minimum = [] { return 1LL; },
                                   .maximum = [&s]() -> long long { return s.model.maximumTracks; },
                                   .accepts = IsSizeOnSensor});
}

std::unique_ptr<IFeature> MakeAoiSelector(const TBuild& b)
{
  TCameraState& s = b.state;
  TFeatureAccess access = b.IdleOnly();
  access.available = [&s] { return s.IsTracks(); };
  return b.Int(std::move(access),
               {.get = [&s] { return s.selectedTrack; },
                .set = [&s](long long v) { s.selectedTrack = v; },
                .minimum = [] { return 1LL; },
                .maximum = [&s] { return static_cast<long long>(s.tracks.size()); },
                .accepts = [&s](long long v) { return IsPlaceIn(v - 1, std::ssize(s.tracks)); }});
}

std::unique_ptr<IFeature> MakeExposureTime(const TBuild& b)
{
  TCameraState& s = b.state;
  TFeatureAccess access = b.Access();
  access.writable = [&s] {
    if (s.acquiring && !s.model.exposureWhileAcquiring) return false;
    return s.Trigger() != ETrigger::ExternalExposure; // the pulse's width is the exposure
  };
  // A global shutter empties all rows at once and cannot expose for less than a row's time.
  const auto minimum = [&s] {
    return s.Shutter() == EShutter::Global
               ? std::max(s.model.minimumExposureSeconds, TFrameTiming::Of(s).rowSeconds)
               : s.model.minimumExposureSeconds;
  };
  return b.Float(std::move(access), {.get = [&s] { return TFrameTiming::Of(s).exposureSeconds; },
                                     .set = [&s](double v) { s.exposureSeconds = v; },
                                     .minimum = minimum,
                                     .maximum = [&s] { return s.model.maximumExposureSeconds; }});
}

std::unique_ptr<IFeature> MakeFrameRate(const TBuild& b)
{
  TCameraState& s = b.state;
  TFeatureAccess access = b.Access();
  access.writable = [&s] {
    return s.Trigger() == ETrigger::Internal ||
           s.Trigger() == ETrigger::ExternalStart; // otherwise triggers set the rate
  };
  const auto maximum = [&s] { return 1.0 / TFrameTiming::Of(s).fastestSeconds; };
  return b.Float(std::move(access),
                 {.get = [&s] { return TFrameTiming::Of(s).frameRate; },
                  .set = [&s](double v) { s.requestedFrameRate = v; },
                  .minimum = [&s, maximum] { return std::min(s.model.minimumFrameRate, maximum()); },
                  .maximum = maximum});
}

std::unique_ptr<IFeature> MakeBurstRate(const TBuild& b)
{
  TCameraState& s = b.state;
  const auto maximum = [&s] { return 1.0 / TFrameTiming::Of(s).fastestSeconds; };
  return b.Float(b.IdleOnly(), {.get = [&s] { return TFrameTiming::Of(s).burstRate; },
                                .set = [&s](double v) { s.requestedBurstRate = v; },
                                .minimum = [&s, maximum] { return std::min(s.model.minimumFrameRate, maximum()); },
                                .maximum = maximum});
}

std::unique_ptr<IFeature> MakeCount(const TBuild& b, long long& count, long long limit)
{
  return b.Int(b.IdleOnly(), {.get = [&count] { return count; },
                              .set = [&count](long long v) { count = v; },
                              .minimum = [] { return 1LL; },
                              .maximum = [limit] { return limit; },
                              .accepts = [](long long v) { return v >= 1 && v <= INT_MAX; }});
}

TFeatureAccess ReadOnly()
{
  TFeatureAccess access;
  access.readOnly = true;
  return access;
}

std::unique_ptr<IFeature> MakeSoftwareTrigger(const TBuild& b)
{
  TFeatureAccess access = b.Access();
  access.available = [&s = b.state] { return s.Trigger() == ETrigger::Software; };
  return b.Command(std::move(access), [trigger = b.actions.softwareTrigger](TDeviceLock&) { return trigger(); });
}

/// Numbers of the camera's events; which frame they belong to is in its metadata.
std::unique_ptr<IFeature> MakeEvent(const TBuild& b, long long number)
{
  return b.Reading(std::function<long long()>([number] { return number; }));
}

std::unique_ptr<IFeature> MakeBaselineLevel(const TBuild& b)
{
  TCameraState& s = b.state;
  return b.Int(b.IdleOnly(), {.get = [&s] { return s.baselineCounts; },
                              .set = [&s](long long v) { s.baselineCounts = v; },
                              .minimum = [] { return 0LL; },
                              .maximum = [] { return kMaxBaselineCounts; }});
}

std::unique_ptr<IFeature> MakeSensorCooling(const TBuild& b)
{
  return b.Bool(b.Access(), {.get = [now = b.actions.thermal] { return now().IsCooling(); },
                             .set = [now = b.actions.thermal](bool on) { now().SetCooling(on); }});
}

std::unique_ptr<IFeature> MakeTargetTemperature(const TBuild& b)
{
  return b.Float(b.Access(), {.get = [now = b.actions.thermal] { return now().TargetCelsius(); },
                              .set = [now = b.actions.thermal](double v) { now().SetTargetCelsius(v); },
                              .minimum = [&m = b.state.model] { return m.thermal.targetMinimumCelsius; },
                              .maximum = [&m = b.state.model] { return m.thermal.targetMaximumCelsius; }});
}

using TInteger = std::function<long long()>;
using TReal = std::function<double()>;

const TRow kRows[] = {
    {L"CameraModel", [](const TBuild& b) { return b.String(b.state.model.cameraModel); }},
    {L"HardwareType", [](const TBuild& b) { return b.String(b.state.model.hardwareType); }},
    {L"SerialNumber", [](const TBuild& b) { return b.String(b.state.model.serialNumber); }},
    {L"FirmwareVersion", [](const TBuild& b) { return b.String(b.state.model.firmwareVersion); }},
    {L"DeviceSource", [](const TBuild& b) { return b.String(L"simulated"); }},
    {L"DDR2Type", [](const TBuild& b) { return b.String(b.state.model.memoryType); }, false, Family::kMemoryType},
    {L"SensorWidth",
     [](const TBuild& b) { return b.Reading(TInteger([&s = b.state] { return s.sensorWidth; })); }},
    {L"SensorHeight",
     [](const TBuild& b) { return b.Reading(TInteger([&s = b.state] { return s.sensorHeight; })); }},
    {L"PixelWidth",
     [](const TBuild& b) { return b.Reading(TReal([&s = b.state] { return s.model.pixelMicrometres; })); }},
    {L"PixelHeight",
     [](const TBuild& b) { return b.Reading(TReal([&s = b.state] { return s.model.pixelMicrometres; })); }},
    {L"AOIHBin", MakeAoiHBin, true, Family::kFreeBinning},
    {L"AOIVBin", MakeAoiVBin, true, Family::kFreeBinning | Family::kTracks},
    {L"AOIHBinInternal",
     [](const TBuild& b) {
       return MakeBinInternal(
           b, [&s = b.state] { return s.Columns().bin; }, [&s = b.state] { return MaximumHBin(s); });
     },
     false, Family::kFreeBinning},
    {L"AOIVBinInternal",
     [](const TBuild& b) {
       return MakeBinInternal(
           b, [&s = b.state] { return s.verticalBin; }, [&s = b.state] { return MaximumVBin(s); });
     },
     false, Family::kFreeBinning},
    {L"AOIWidth", MakeAoiWidth, true},
    {L"AOIHeight", MakeAoiHeight, true},
    {L"AOILeft", MakeAoiLeft, true},
    {L"AOITop", MakeAoiTop, true},
    {L"AOICount", MakeAoiCount, true, Family::kTracks},
    {L"AOISelector", MakeAoiSelector, true, Family::kTracks},
    {L"AOIStride",
     [](const TBuild& b) { return b.Reading(TInteger([&s = b.state] { return s.StrideBytes(); })); }},
    {L"ImageSizeBytes",
     [](const TBuild& b) { return b.Reading(TInteger([&s = b.state] { return s.ImageSizeBytes(); })); }},
    {L"ExposureTime", MakeExposureTime, true},
    {L"FrameRate", MakeFrameRate, true},
    {L"BurstRate", MakeBurstRate, true, Family::kAccumulation},
    {L"ReadoutTime",
     [](const TBuild& b) {
       return b.Reading(TReal([&s = b.state] { return TFrameTiming::Of(s).readoutSeconds; }));
     }},
    {L"AccumulateCount", [](const TBuild& b) { return MakeCount(b, b.state.accumulateCount, kMaxAccumulations); },
     true, Family::kAccumulation},
    {L"FrameCount", [](const TBuild& b) { return MakeCount(b, b.state.frameCount, INT_MAX); }, true},
    {L"SoftwareTrigger", MakeSoftwareTrigger},
    {L"Overlap", [](const TBuild& b) { return b.Bool(b.IdleOnly(), b.state.overlap); }, true},
    {L"MetadataEnable", [](const TBuild& b) { return b.Bool(b.IdleOnly(), b.state.metadata); }, true},
    {L"TimestampClock", [](const TBuild& b) { return b.Reading(TInteger(b.actions.timestampTicks)); }},
    {L"TimestampClockFrequency",
     [](const TBuild& b) { return b.Reading(TInteger([&s = b.state] { return s.model.timestampFrequency; })); }},
    {L"TimestampClockReset",
     [](const TBuild& b) {
       return b.Command(b.Access(), [reset = b.actions.resetTimestamp](TDeviceLock&) {
         reset();
         return VX_SUCCESS;
       });
     }},
    {L"AcquisitionStart", [](const TBuild& b) { return b.Command(b.Access(), b.actions.start); }},
    {L"AcquisitionStop", [](const TBuild& b) { return b.Command(b.Access(), b.actions.stop); }},
    {L"CameraAcquiring", [](const TBuild& b) { return b.Bool(ReadOnly(), b.state.acquiring); }},
    {L"BaselineClamp", [](const TBuild& b) { return b.Bool(b.IdleOnly(), b.state.baselineClamp); }, true},
    {L"BaselineLevel", MakeBaselineLevel, true},
    {L"ExposureStartEvent", [](const TBuild& b) { return MakeEvent(b, 1); }, false, Family::kEvents},
    {L"ExposureEndEvent", [](const TBuild& b) { return MakeEvent(b, 2); }, false, Family::kEvents},
    {L"SensorCooling", MakeSensorCooling, true},
    {L"SensorTemperature",
     [](const TBuild& b) {
       return b.Reading(TReal([now = b.actions.thermal] { return now().ReadingCelsius(); }));
     }},
    {L"TargetSensorTemperature", MakeTargetTemperature, true},
};

template <typename Visit>
void ForEachRow(Visit&& visit)
{
  for (const TRow& row : kRows) visit(row);
  for (const TRow& row : BusFeatureRows()) visit(row);
}

const TRow* FindRow(std::wstring_view name)
{
  const TRow* found = nullptr;
  ForEachRow([&](const TRow& row) {
    if (name == row.name) found = &row;
  });
  return found;
}

/// Updates what depends on the gain: the two names of the gain channel, the bit depth, the encodings that can have
/// it.
void UpdateGain(TCameraState& state, bool bySimpleControl)
{
  TChoice& channel = state.Choice(EChoice::PreAmpGainChannel);
  TChoice& simple = state.Choice(EChoice::SimplePreAmpGainControl);
  if (channel.Exists() && simple.Exists()) {
    if (bySimpleControl)
      channel.Choose(simple.Index());
    else
      simple.Choose(channel.Index());
  }
  state.Choice(EChoice::BitDepth).Choose(state.IsGainCombined() ? 1 : 0);
  TChoice& encoding = state.Choice(EChoice::PixelEncoding);
  if (state.IsGainCombined() && IsTwelveBits(encoding.Meaning<EPixelEncoding>())) encoding.Choose(L"Mono16");
}

/// A global shutter cannot be read out at the highest of three rates or more.
bool IsRateAvailable(const TCameraState& state, int index)
{
  const int count = static_cast<int>(state.Choice(EChoice::PixelReadoutRate).Texts().size());
  return state.Shutter() != EShutter::Global || count < 3 || index != count - 1;
}

void UpdateShutter(TCameraState& state)
{
  TChoice& rate = state.Choice(EChoice::PixelReadoutRate);
  if (!IsRateAvailable(state, rate.Index())) rate.Choose(rate.Index() - 1);
}

/// "2x2" to both binning factors.
void UpdateBinning(TCameraState& state)
{
  const std::wstring text(state.Choice(EChoice::AoiBinning).Text());
  wchar_t* rest = nullptr;
  const long horizontal = std::wcstol(text.c_str(), &rest, 10);
  const long vertical = *rest == L'x' ? std::wcstol(rest + 1, nullptr, 10) : horizontal;
  state.imageColumns.bin = std::clamp(horizontal, 1L, static_cast<long>(state.sensorWidth));
  state.trackColumns.bin = state.imageColumns.bin;
  state.verticalBin = std::clamp(vertical, 1L, static_cast<long>(state.sensorHeight));
  state.FitArea();
}

std::unique_ptr<IFeature> MakeChoice(const TBuild& b, EChoice which)
{
  TCameraState& s = b.state;
  TChoice& choice = s.Choice(which);
  TFeatureAccess access = b.IdleOnly();
  std::function<bool(int)> available;
  std::function<void()> chosen;
  std::function<void()> refresh;
  switch (which) {
  case EChoice::PixelEncoding:
    available = [&s, &choice](int index) {
      return !IsTwelveBits(choice.MeaningAt<EPixelEncoding>(index)) || !s.IsGainCombined();
    };
    break;
  case EChoice::PreAmpGainChannel:
    chosen = [&s] { UpdateGain(s, false); };
    break;
  case EChoice::SimplePreAmpGainControl:
    chosen = [&s] { UpdateGain(s, true); };
    break;
  case EChoice::PixelReadoutRate:
    available = [&s](int index) { return IsRateAvailable(s, index); };
    break;
  case EChoice::ShutteringMode:
    chosen = [&s] { UpdateShutter(s); };
    break;
  case EChoice::AoiBinning:
    chosen = [&s] { UpdateBinning(s); };
    break;
  case EChoice::BitDepth:
    access.readOnly = true; // follows from the gain
    break;
  case EChoice::PreAmpGain:
    available = [&s, &choice](int index) {
      return s.HasPreAmpGain(s.Choice(EChoice::PreAmpGainSelector).Text(), choice.TextAt(index));
    };
    chosen = [&s] { s.StorePreAmpGain(); };
    break;
  case EChoice::PreAmpGainSelector:
    chosen = [&s] { s.ShowPreAmpGain(); };
    break;
  case EChoice::FanSpeed:
    access = b.Access();
    chosen = [&s, now = b.actions.thermal] { now().SetFan(s.Fan()); };
    break;
  case EChoice::TemperatureStatus:
    access = ReadOnly();
    refresh = [&choice, now = b.actions.thermal] {
      choice.Choose(static_cast<int>(now().Status())); // the order of the texts is that of the enumerators
    };
    break;
  case EChoice::AoiLayout:
  case EChoice::CycleMode:
  case EChoice::TriggerMode:
  case EChoice::TriggerConfiguration:
    break;
  }
  return std::make_unique<TEnumFeature>(std::move(access), s.revision, choice, std::move(available),
                                        std::move(chosen), std::move(refresh));
}

/// The feature of a name that some model has.
std::unique_ptr<IFeature> MakeFeature(const TBuild& b, const std::wstring& name)
{
  if (const std::optional<EChoice> choice = ChoiceOfName(name)) return MakeChoice(b, *choice);
  const TRow* row = FindRow(name);
  return row ? row->make(b) : nullptr;
}

/// Sets a configured value through a feature of any kind.
bool SetConfigured(IFeature& feature, const std::wstring& value)
{
  const std::string text = ToUtf8(value);
  long long integer = 0;
  if (ReadInteger(text, LLONG_MIN, LLONG_MAX, integer) && feature.SetInt(integer) == VX_SUCCESS) return true;
  double number = 0.0;
  if (ReadNumber(text, -1e300, 1e300, number) && feature.SetFloat(number) == VX_SUCCESS) return true;
  bool flag = false;
  if (ReadSwitch(text, flag) && feature.SetBool(flag) == VX_SUCCESS) return true;
  return feature.SetText(value) == VX_SUCCESS;
}

/// The sensor's size is part of many things, so it changes before anything is built.
void ChangeSensor(TCameraState& state)
{
  const auto change = [&state](const wchar_t* name, long long& size) {
    const auto found = state.configuration.features.find(name);
    if (found == state.configuration.features.end() || !found->second.value) return;
    long long wanted = 0;
    if (ReadInteger(ToUtf8(*found->second.value), 1LL, kMaxSensorPixels, wanted)) size = wanted;
  };
  change(L"SensorWidth", state.sensorWidth);
  change(L"SensorHeight", state.sensorHeight);
  state.imageColumns.width = state.trackColumns.width = state.sensorWidth;
  state.height = state.sensorHeight;
}

/// What is wrong with a configured change, in words; empty when it fits the feature. Values that are set through
/// the feature are tried later.
std::string FindChangeFault(const TFeatureSet& features, const std::wstring& name, const TFeatureOverride& change)
{
  if (change.remove) return "";
  IFeature* feature = features.Find(name);
  if (!feature) return "the model has no such feature";
  long long integer = 0;
  double number = 0.0;
  std::wstring_view text;
  int count = 0;
  const bool isInt = feature->GetInt(integer) != VX_ERR_WRONG_KIND;
  const bool isFloat = feature->GetFloat(number) != VX_ERR_WRONG_KIND;
  if (change.texts && feature->GetCount(count) == VX_ERR_WRONG_KIND) return "only an enumerated feature has Texts";
  if (change.texts && change.texts->empty()) return "Texts are missing";
  if ((change.minimum || change.maximum) && !isInt && !isFloat) return "only a number has Min and Max";
  const TRow* row = FindRow(name);
  if (!change.value || !row || row->setsValue || feature->GetString(text) != VX_ERR_WRONG_KIND) return "";

  const std::string value = ToUtf8(*change.value);
  const bool isSize = name == L"SensorWidth" || name == L"SensorHeight";
  const bool good =
      isInt     ? ReadInteger(value, isSize ? 1LL : LLONG_MIN, isSize ? kMaxSensorPixels : LLONG_MAX, integer)
      : isFloat ? ReadNumber(value, -1e300, 1e300, number)
                : false;
  return good ? "" : "it cannot be " + value;
}

} // namespace

bool IsKnownFeature(std::wstring_view name)
{
  return FindRow(name) || ChoiceOfName(name);
}

bool BuildCameraFeatures(TCameraState& state, const TCameraActions& actions, TFeatureSet& features,
                         std::string& error)
{
  static const auto& unchanged = *new TFeatureOverride;
  const auto changeOf = [&state](const std::wstring& name) -> const TFeatureOverride& {
    const auto found = state.configuration.features.find(name);
    return found == state.configuration.features.end() ? unchanged : found->second;
  };
  ChangeSensor(state);

  ForEachRow([&](const TRow& row) {
    const TFeatureOverride& change = changeOf(row.name);
    if (row.IsOf(state.model) && !change.remove) features.Add(row.name, row.make({state, actions, change}));
  });
  for (const TModelChoice& has : state.model.choices) {
    const wchar_t* name = ChoiceName(has.choice);
    const TFeatureOverride& change = changeOf(name);
    if (change.texts) {
      TChoice& choice = state.Choice(has.choice);
      const std::wstring present(choice.Text());
      choice.SetTexts(has.choice, *change.texts);
      choice.Choose(std::max(0, choice.Find(present)));
    }
    if (!change.remove) features.Add(name, MakeChoice({state, actions, change}, has.choice));
  }

  state.ResetPreAmpGains();
  state.ShowPreAmpGain();
  state.thermal.SetFan(state.Fan());

  for (const auto& [name, change] : state.configuration.features) {
    const std::string fault = FindChangeFault(features, name, change);
    if (fault.empty()) continue;
    error = std::string("model ") + state.model.name + ": feature " + ToUtf8(name) + ": " + fault;
    return false;
  }

  // Values last, and repeatedly: which values a feature accepts depends on the others.
  std::vector<std::wstring> waiting;
  for (const auto& [name, change] : state.configuration.features) {
    const TRow* row = FindRow(name);
    if (features.Find(name) && change.value && (!row || row->setsValue)) waiting.push_back(name);
  }
  const auto set = [&](const std::wstring& name) {
    const TFeatureOverride& change = changeOf(name);
    TFeatureOverride writable = change; // a feature that is configured read-only still takes its configured value
    writable.readOnly = false;
    return SetConfigured(*MakeFeature({state, actions, writable}, name), *change.value);
  };
  while (!waiting.empty()) {
    if (std::erase_if(waiting, set) > 0) continue;
    error = std::string("model ") + state.model.name + ": feature " + ToUtf8(waiting.front()) + " cannot be " +
            ToUtf8(*changeOf(waiting.front()).value);
    return false;
  }
  return true;
}

} // namespace vxsim
