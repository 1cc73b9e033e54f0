// SPDX-License-Identifier: MIT
// The features of a camera: those of the camera itself, by the table of sources, and those that the library adds.
#include "utility/utf8.h"
#include "vxcore/genicam/feature_kinds.h"
#include "vxcore/genicam/TCoolingState.h"
#include "vxcore/genicam/TGenICamCamera.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace vxgenicam {

namespace {

using TFeatures = std::map<std::wstring, std::unique_ptr<IFeature>, std::less<>>;
using EAxis = TImageArea::EAxis;

constexpr long long kMaxFrames = 0x7FFF'FFFF;
constexpr long long kMaxAccumulations = 32767; ///< so many 16-bit pixels fit into a sum

// ------------------------------------------------------------------------------------------------ The image area

/// A number of the image area, from 1 to what @p maximum says.
std::unique_ptr<IFeature> AreaNumber(TGenICamCamera& camera, std::function<long long()> get,
                                     std::function<long long()> maximum, std::function<int(long long)> set)
{
  TNumberFunctions<long long> functions;
  functions.get = [get = std::move(get)](long long& value) {
    value = get();
    return VX_SUCCESS;
  };
  functions.minimum = [](long long& value) {
    value = 1;
    return VX_SUCCESS;
  };
  functions.maximum = [maximum = std::move(maximum)](long long& value) {
    value = maximum();
    return VX_SUCCESS;
  };
  functions.set = std::move(set);
  return std::make_unique<TNumberFeature<long long>>(BetweenRuns(camera), std::move(functions));
}

std::unique_ptr<IFeature> MakeStart(TGenICamCamera& camera, EAxis axis)
{
  TImageArea& area = camera.Area();
  return AreaNumber(
      camera, [&area, axis] { return area.Start(axis); },
      [&area, axis] { return (area.MaxSide(axis) - area.Side(axis)) * area.Bin(axis) + 1; },
      [&area, axis](long long start) { return area.SetStart(axis, start); });
}

std::unique_ptr<IFeature> MakeSide(TGenICamCamera& camera, EAxis axis)
{
  TImageArea& area = camera.Area();
  return AreaNumber(
      camera, [&area, axis] { return area.Side(axis); }, [&area, axis] { return area.MaxSide(axis); },
      [&area, axis](long long side) { return area.SetSide(axis, side); });
}

std::unique_ptr<IFeature> MakeBin(TGenICamCamera& camera, EAxis axis)
{
  TImageArea& area = camera.Area();
  if (!area.HasBinning(axis)) return nullptr;
  return AreaNumber(
      camera, [&area, axis] { return area.Bin(axis); }, [&area, axis] { return area.MaxBin(axis); },
      [&area, axis](long long bin) { return area.SetBin(axis, bin); });
}

/// Square binning by its texts, "2x2".
std::unique_ptr<IFeature> MakeSquareBinning(TGenICamCamera& camera)
{
  TImageArea& area = camera.Area();
  if (!area.HasBinning(EAxis::Horizontal) || !area.HasBinning(EAxis::Vertical)) return nullptr;
  const long long most = std::min(area.MaxBin(EAxis::Horizontal), area.MaxBin(EAxis::Vertical));
  std::vector<std::wstring> texts;
  for (long long bin = 1; bin <= most; ++bin) texts.push_back(std::to_wstring(bin) + L"x" + std::to_wstring(bin));
  TChoiceFunctions functions;
  functions.get = [&area](int& index) {
    if (area.Bin(EAxis::Horizontal) != area.Bin(EAxis::Vertical)) return VX_ERR_NOT_AVAILABLE;
    index = static_cast<int>(area.Bin(EAxis::Horizontal)) - 1;
    return VX_SUCCESS;
  };
  functions.set = [&area](int index) {
    const int code = area.SetBin(EAxis::Horizontal, index + 1);
    return code == VX_SUCCESS ? area.SetBin(EAxis::Vertical, index + 1) : code;
  };
  return std::make_unique<TChoiceFeature>(BetweenRuns(camera), std::move(texts), std::move(functions));
}

// ------------------------------------------------------------------------------------------------ Pixels

std::unique_ptr<IFeature> MakeEncoding(TGenICamCamera& camera)
{
  std::vector<std::wstring> texts;
  texts.reserve(kEncodingCount);
  for (int index = 0; index < kEncodingCount; ++index) texts.emplace_back(NameOf(static_cast<EEncoding>(index)));
  TChoiceFunctions functions;
  functions.get = [&camera](int& index) {
    index = static_cast<int>(camera.Settings().encoding);
    return camera.Settings().hasFormat ? VX_SUCCESS : VX_ERR_NOT_AVAILABLE;
  };
  functions.set = [&camera](int index) { return camera.SetEncoding(static_cast<EEncoding>(index)); };
  functions.isImplemented = [&camera](int index) {
    return camera.FormatFor(static_cast<EEncoding>(index)).has_value();
  };
  return std::make_unique<TChoiceFeature>(BetweenRuns(camera), std::move(texts), std::move(functions));
}

/// "16 Bit": of the widest pixels that the camera has.
std::unique_ptr<IFeature> MakeBitDepth(TGenICamCamera& camera)
{
  struct TDepth
  {
    EPixelFormat format;
    const wchar_t* text;
  };
  constexpr TDepth kDepths[] = {{EPixelFormat::Mono16, L"16 Bit"},       {EPixelFormat::Mono14, L"14 Bit"},
                                {EPixelFormat::Mono12, L"12 Bit"},       {EPixelFormat::Mono12p, L"12 Bit"},
                                {EPixelFormat::Mono12Packed, L"12 Bit"}, {EPixelFormat::Mono10, L"10 Bit"}};
  const TSource source = camera.SourceOf("PixelEncoding");
  for (const TDepth& depth : kDepths)
    if (camera.Nodes().HasEntry(source.node, NameOf(depth.format))) return OneEntryFeature(depth.text);
  return OneEntryFeature(L"8 Bit");
}

// ------------------------------------------------------------------------------------------------ Timing and triggers

/// The camera's own limit of frames, switched on when it is set. Without one the rate that exposure and readout allow.
std::unique_ptr<IFeature> MakeFrameRate(TGenICamCamera& camera)
{
  TNodes& nodes = camera.Nodes();
  const TSource source = camera.SourceOf("FrameRate");
  TNumberFunctions<double> functions;
  if (!source) {
    const TSource exposure = camera.SourceOf("ExposureTime");
    const TSource readout = camera.SourceOf("ReadoutTime");
    functions.get = [&nodes, exposure, readout](double& rate) {
      double exposed = 0.0;
      double read = 0.0;
      if (const int code = ValueOf(nodes, exposure, exposed); code != VX_SUCCESS) return code;
      if (readout) ValueOf(nodes, readout, read);
      if (!(exposed + read > 0.0)) return VX_ERR_NOT_AVAILABLE;
      rate = 1.0 / (exposed + read);
      return VX_SUCCESS;
    };
    return exposure ? std::make_unique<TNumberFeature<double>>(TAccess(), std::move(functions)) : nullptr;
  }
  const std::string enable =
      nodes.FirstOf({"AcquisitionFrameRateEnable", "AcquisitionFrameRateEnabled", "AcquisitionFrameRateMode"});
  functions.get = [&nodes, source](double& rate) {
    double set = 0.0;
    const int code = ValueOf(nodes, source, set);
    double reached = 0.0;
    const bool isLimited = nodes.GetNumber("ResultingFrameRate", reached) == VX_SUCCESS && reached > 0.0;
    if (code == VX_SUCCESS) rate = isLimited ? std::min(reached, set) : set;
    return code;
  };
  functions.set = [&nodes, source, enable](double rate) {
    if (!enable.empty()) nodes.SetSwitch(enable, true);
    return nodes.SetNumber(source.node, source.ToCamera(DecimalRateOf(rate)));
  };
  functions.minimum = [&nodes, source](double& rate) { return LimitOf(nodes, source, false, rate); };
  functions.maximum = [&nodes, source](double& rate) { return LimitOf(nodes, source, true, rate); };
  return std::make_unique<TNumberFeature<double>>(TAccess(),
                                                  std::move(functions)); // writable once it is switched on
}

std::unique_ptr<IFeature> MakeTriggerMode(TGenICamCamera& camera)
{
  TTriggerMode& trigger = camera.Trigger();
  TChoiceFunctions functions;
  functions.get = [&trigger](int& index) {
    index = trigger.Mode();
    return VX_SUCCESS;
  };
  functions.set = [&trigger](int index) { return trigger.Set(index); };
  functions.isAvailable = [&trigger](int index) { return trigger.IsAvailable(index); };
  return std::make_unique<TChoiceFeature>(BetweenRuns(camera), TTriggerMode::Texts(), std::move(functions));
}

std::unique_ptr<IFeature> MakeOverlap(TGenICamCamera& camera)
{
  TNodes& nodes = camera.Nodes();
  const TSource source = camera.SourceOf("Overlap");
  if (!source) return nullptr;
  TNumberFunctions<bool> functions;
  const auto select = [&nodes] { Select(nodes, "TriggerSelector", {"FrameStart"}); };
  functions.get = [&nodes, source, select](bool& on) {
    select();
    return nodes.GetSwitch(source.node, on);
  };
  functions.set = [&nodes, source, select](bool on) {
    select();
    if (!on) return nodes.SetText(source.node, "Off");
    return nodes.SetText(source.node, nodes.HasEntry(source.node, "ReadOut") ? "ReadOut" : "PreviousFrame");
  };
  return std::make_unique<TNumberFeature<bool>>(BetweenRuns(camera), std::move(functions));
}

std::unique_ptr<IFeature> MakeCycleMode(TGenICamCamera& camera)
{
  TChoiceFunctions functions;
  functions.get = [&camera](int& index) {
    index = camera.Settings().isFixed ? 0 : 1;
    return VX_SUCCESS;
  };
  functions.set = [&camera](int index) {
    camera.Settings().isFixed = index == 0;
    return VX_SUCCESS;
  };
  return std::make_unique<TChoiceFeature>(BetweenRuns(camera), std::vector<std::wstring>{L"Fixed", L"Continuous"},
                                          std::move(functions));
}

std::unique_ptr<IFeature> MakeMetadataEnable(TGenICamCamera& camera)
{
  TNumberFunctions<bool> functions;
  functions.get = [&camera](bool& on) {
    on = camera.Settings().hasMetadata;
    return VX_SUCCESS;
  };
  functions.set = [&camera](bool on) {
    camera.Settings().hasMetadata = on;
    return VX_SUCCESS;
  };
  return std::make_unique<TNumberFeature<bool>>(BetweenRuns(camera), std::move(functions));
}

std::unique_ptr<IFeature> MakeAcquiring(TGenICamCamera& camera)
{
  TNumberFunctions<bool> functions;
  functions.get = [&camera](bool& on) {
    on = camera.Acquisition().IsRunning();
    return VX_SUCCESS;
  };
  return std::make_unique<TNumberFeature<bool>>(TAccess(), std::move(functions));
}

// ------------------------------------------------------------------------------------------------ Readout

/// Factors of gain, of a camera that sets it in dB.
std::unique_ptr<IFeature> MakeGain(TGenICamCamera& camera)
{
  TNodes& nodes = camera.Nodes();
  const TSource source = camera.SourceOf("PreAmpGain");
  const auto select = [&nodes] { Select(nodes, "GainSelector", {"AnalogAll", "All"}); };
  select();
  double minimum = 0.0;
  double maximum = 0.0;
  if (!source || LimitOf(nodes, source, false, minimum) != VX_SUCCESS ||
      LimitOf(nodes, source, true, maximum) != VX_SUCCESS)
    return nullptr;
  constexpr double kSlack = 1e-6;
  std::vector<double> decibels;
  std::vector<std::wstring> texts;
  for (const int factor : {1, 2, 4, 8}) {
    const double gain = 20.0 * std::log10(static_cast<double>(factor));
    if (gain < minimum - kSlack || gain > maximum + kSlack) continue;
    decibels.push_back(gain);
    texts.push_back(std::to_wstring(factor) + L"x");
  }
  if (texts.empty()) return nullptr;
  TChoiceFunctions functions;
  functions.get = [&nodes, source, decibels](int& index) {
    double gain = 0.0;
    const int code = ValueOf(nodes, source, gain);
    if (code != VX_SUCCESS) return code;
    const auto nearest =
        std::ranges::min_element(decibels, {}, [gain](double one) { return std::fabs(one - gain); });
    index = static_cast<int>(nearest - decibels.begin());
    return VX_SUCCESS;
  };
  functions.set = [&nodes, source, decibels, select](int index) {
    select();
    return nodes.SetNumber(source.node, source.ToCamera(decibels[static_cast<std::size_t>(index)]));
  };
  return std::make_unique<TChoiceFeature>(AccessOf(nodes, source), std::move(texts), std::move(functions));
}

/// The rate of the sensor's pixel clock, where the camera reports it.
std::unique_ptr<IFeature> MakeReadoutRate(TGenICamCamera& camera)
{
  constexpr double kHertzPerMegahertz = 1e6;
  TNodes& nodes = camera.Nodes();
  double hertz = kHertzPerMegahertz;
  if (const TSource source = camera.SourceOf("PixelReadoutRate")) {
    Select(nodes, "DeviceClockSelector", {"SensorDigitization", "Sensor"});
    if (ValueOf(nodes, source, hertz) != VX_SUCCESS || hertz <= 0.0) hertz = kHertzPerMegahertz;
  }
  char text[48];
  std::snprintf(text, sizeof text, "%g MHz", hertz / kHertzPerMegahertz);
  return OneEntryFeature(FromUtf8(text));
}

std::unique_ptr<IFeature> MakeShutter(TGenICamCamera& camera)
{
  TNodes& nodes = camera.Nodes();
  const TSource source = camera.SourceOf("ElectronicShutteringMode");
  std::vector<std::string> entries;
  std::vector<std::wstring> texts;
  for (const auto& [entry, text] :
       {std::pair("Rolling", L"Rolling"), {"Global", L"Global"}, {"GlobalReset", L"Global"}}) {
    if (!nodes.HasEntry(source.node, entry) || (!texts.empty() && texts.back() == text)) continue;
    entries.emplace_back(entry);
    texts.emplace_back(text);
  }
  if (texts.empty()) return nullptr;
  TChoiceFunctions functions;
  functions.get = [&nodes, source, entries](int& index) {
    std::string text;
    const int code = nodes.GetText(source.node, text);
    if (code != VX_SUCCESS) return code;
    index = text == "Rolling" || entries.size() == 1 ? 0 : 1;
    return VX_SUCCESS;
  };
  functions.set = [&nodes, source, entries](int index) {
    return nodes.SetText(source.node, entries[static_cast<std::size_t>(index)]);
  };
  return std::make_unique<TChoiceFeature>(AccessOf(nodes, source), std::move(texts), std::move(functions));
}

std::unique_ptr<IFeature> MakeGainSelector(TGenICamCamera& camera)
{
  TChoiceFunctions functions;
  functions.get = [&camera](int& index) {
    index = camera.Settings().gainChannel;
    return VX_SUCCESS;
  };
  functions.set = [&camera](int index) {
    camera.Settings().gainChannel = index;
    return VX_SUCCESS;
  };
  return std::make_unique<TChoiceFeature>(TAccess(), std::vector<std::wstring>{L"Low", L"High"},
                                          std::move(functions));
}

// ------------------------------------------------------------------------------------------------ Temperature

/// A fan with the camera's words. SetFanMode() asks for "On" as its full speed, so the camera's word for that becomes "On".
std::unique_ptr<IFeature> MakeFan(TNodes& nodes, const TSource& source)
{
  const std::vector<std::string> entries = nodes.Entries(source.node);
  if (entries.empty()) return nullptr;
  const bool hasOn = std::ranges::count(entries, "On") > 0;
  constexpr std::array<std::string_view, 4> kFullSpeed = {"Full", "High", "Max", "Maximum"};
  std::vector<std::wstring> texts;
  texts.reserve(entries.size());
  for (const std::string& entry : entries)
    texts.push_back(!hasOn && std::ranges::count(kFullSpeed, entry) > 0 ? L"On" : FromUtf8(entry));
  TChoiceFunctions functions;
  functions.get = [&nodes, source, entries](int& index) {
    std::string text;
    const int code = nodes.GetText(source.node, text);
    const auto found = std::ranges::find(entries, text);
    if (code != VX_SUCCESS || found == entries.end()) return code == VX_SUCCESS ? VX_ERR_NOT_AVAILABLE : code;
    index = static_cast<int>(found - entries.begin());
    return VX_SUCCESS;
  };
  functions.set = [&nodes, source, entries](int index) {
    return nodes.SetText(source.node, entries[static_cast<std::size_t>(index)]);
  };
  functions.isAvailable = [&nodes, source, entries](int index) {
    return nodes.HasEntry(source.node, entries[static_cast<std::size_t>(index)]);
  };
  return std::make_unique<TChoiceFeature>(AccessOf(nodes, source), std::move(texts), std::move(functions));
}

int ReadTemperature(TNodes& nodes, const TSource& source, double& celsius)
{
  Select(nodes, "DeviceTemperatureSelector", {"Sensor"});
  return ValueOf(nodes, source, celsius);
}

std::unique_ptr<IFeature> MakeTemperature(TGenICamCamera& camera)
{
  const TSource source = camera.SourceOf("SensorTemperature");
  if (!source) return nullptr;
  TNodes& nodes = camera.Nodes();
  TNumberFunctions<double> functions;
  functions.get = [&nodes, source](double& value) { return ReadTemperature(nodes, source, value); };
  return std::make_unique<TNumberFeature<double>>(TAccess(), std::move(functions));
}

std::unique_ptr<IFeature> MakeTemperatureStatus(TGenICamCamera& camera)
{
  const TSource target = camera.SourceOf("TargetSensorTemperature");
  const TSource measured = camera.SourceOf("SensorTemperature");
  const TSource cooling = camera.SourceOf("SensorCooling");
  if (!target || !measured) return nullptr;
  TNodes& nodes = camera.Nodes();
  TChoiceFunctions functions;
  functions.get = [&nodes, target, measured, cooling, state = std::make_shared<TCoolingState>()](int& index) {
    bool isOn = true;
    double set = 0.0;
    double celsius = 0.0;
    if (cooling) nodes.GetSwitch(cooling.node, isOn);
    if (const int code = ValueOf(nodes, target, set); code != VX_SUCCESS) return code;
    if (const int code = ReadTemperature(nodes, measured, celsius); code != VX_SUCCESS) return code;
    index = state->Update(isOn, celsius, set);
    return VX_SUCCESS;
  };
  return std::make_unique<TChoiceFeature>(TAccess(), TCoolingState::Texts(), std::move(functions));
}

// ------------------------------------------------------------------------------------------------ Texts

/// At most four numbers with dots between them: what a firmware calls itself may have more, or words.
std::wstring FourNumbers(const std::string& version)
{
  std::wstring numbers;
  int count = 0;
  bool isInNumber = false;
  for (const char c : version) {
    const bool isDigit = c >= '0' && c <= '9';
    if (isDigit && !isInNumber) {
      if (count == 4) break;
      if (count++ > 0) numbers += L'.';
    }
    if (isDigit) numbers += static_cast<wchar_t>(c);
    isInNumber = isDigit;
  }
  return numbers;
}

std::unique_ptr<IFeature> MakeFirmwareVersion(TGenICamCamera& camera)
{
  const TSource source = camera.SourceOf("FirmwareVersion");
  if (!source) return nullptr;
  return std::make_unique<TTextFeature>([&nodes = camera.Nodes(), source](std::wstring& text) {
    std::string version;
    const int code = nodes.GetText(source.node, version);
    if (code == VX_SUCCESS) text = FourNumbers(version);
    return code;
  });
}

// ------------------------------------------------------------------------------------------------ The table

/// How a feature of the camera itself appears. Without one the camera's feature is of a kind that cannot be it.
struct TPlainRow
{
  const wchar_t* name;
  std::unique_ptr<IFeature> (*make)(TNodes& nodes, const TSource& source);
};

constexpr TPlainRow kPlainRows[] = {
    {L"BaselineLevel", IntegerFeature}, {L"CameraModel", TextFeature},
    {L"ExposureTime", FloatFeature},    {L"FanSpeed", MakeFan},
    {L"PixelHeight", FloatFeature},     {L"PixelWidth", FloatFeature},
    {L"ReadoutTime", FloatFeature},     {L"SensorCooling", SwitchFeature},
    {L"SerialNumber", TextFeature},     {L"TargetSensorTemperature", FloatFeature},
};

/// A feature that the library makes. Without one the camera lacks it.
struct TMadeRow
{
  const wchar_t* name;
  std::unique_ptr<IFeature> (*make)(TGenICamCamera& camera);
};

const TMadeRow kMadeRows[] = {
    {L"AccumulateCount",
     [](TGenICamCamera& c) { return StoredInteger(c, c.Settings().accumulations, 1, kMaxAccumulations); }},
    {L"AcquisitionStart", [](TGenICamCamera& c) { return CommandFeature([&c] { return c.Start(); }); }},
    {L"AcquisitionStop", [](TGenICamCamera& c) { return CommandFeature([&c] { return c.Stop(); }); }},
    {L"AOIBinning", MakeSquareBinning},
    {L"AOIHBin", [](TGenICamCamera& c) { return MakeBin(c, EAxis::Horizontal); }},
    {L"AOIHBinInternal", [](TGenICamCamera& c) { return MakeBin(c, EAxis::Horizontal); }},
    {L"AOIHeight", [](TGenICamCamera& c) { return MakeSide(c, EAxis::Vertical); }},
    {L"AOILayout", [](TGenICamCamera&) { return OneEntryFeature(L"Image"); }},
    {L"AOILeft", [](TGenICamCamera& c) { return MakeStart(c, EAxis::Horizontal); }},
    {L"AOIStride",
     [](TGenICamCamera& c) {
       return DerivedInteger([&c]() -> long long {
         return static_cast<long long>(
             StrideOf(c.Settings().encoding, static_cast<std::size_t>(c.Area().Side(EAxis::Horizontal))));
       });
     }},
    {L"AOITop", [](TGenICamCamera& c) { return MakeStart(c, EAxis::Vertical); }},
    {L"AOIVBin", [](TGenICamCamera& c) { return MakeBin(c, EAxis::Vertical); }},
    {L"AOIVBinInternal", [](TGenICamCamera& c) { return MakeBin(c, EAxis::Vertical); }},
    {L"AOIWidth", [](TGenICamCamera& c) { return MakeSide(c, EAxis::Horizontal); }},
    {L"BitDepth", MakeBitDepth},
    {L"CameraAcquiring", MakeAcquiring},
    {L"CycleMode", MakeCycleMode},
    {L"DeviceSource", [](TGenICamCamera& c) { return ConstantText(FromUtf8(c.Description())); }},
    {L"ElectronicShutteringMode", MakeShutter},
    {L"FeatureSources",
     [](TGenICamCamera& c) {
       return std::unique_ptr<IFeature>(std::make_unique<TTextFeature>([&c](std::wstring& text) {
         text = FromUtf8(c.FeatureSources());
         return VX_SUCCESS;
       }));
     }},
    {L"FirmwareVersion", MakeFirmwareVersion},
    {L"FrameCount", [](TGenICamCamera& c) { return StoredInteger(c, c.Settings().frameCount, 1, kMaxFrames); }},
    {L"FrameRate", MakeFrameRate},
    {L"FramesLost",
     [](TGenICamCamera& c) { return DerivedInteger([&c] { return c.Acquisition().FramesLost(); }); }},
    {L"HardwareType", [](TGenICamCamera&) { return ConstantText(L"GENICAM"); }},
    {L"ImageSizeBytes",
     [](TGenICamCamera& c) { return DerivedInteger([&c]() -> long long { return c.ImageSizeBytes(); }); }},
    {L"MetadataEnable", MakeMetadataEnable},
    {L"Overlap", MakeOverlap},
    {L"PixelEncoding", MakeEncoding},
    {L"PixelReadoutRate", MakeReadoutRate},
    {L"PreAmpGain", MakeGain},
    {L"PreAmpGainChannel", [](TGenICamCamera&) { return OneEntryFeature(L"Low"); }},
    {L"PreAmpGainSelector", MakeGainSelector},
    {L"SensorHeight",
     [](TGenICamCamera& c) { return DerivedInteger([&c] { return c.Area().SensorSide(EAxis::Vertical); }); }},
    {L"SensorTemperature", MakeTemperature},
    {L"SensorWidth",
     [](TGenICamCamera& c) { return DerivedInteger([&c] { return c.Area().SensorSide(EAxis::Horizontal); }); }},
    {L"SoftwareTrigger",
     [](TGenICamCamera& c) -> std::unique_ptr<IFeature> {
       if (!c.Trigger().IsAvailable(TTriggerMode::Software)) return nullptr;
       return CommandFeature([&c] { return c.SendSoftwareTrigger(); });
     }},
    {L"TemperatureStatus", MakeTemperatureStatus},
    {L"TimestampClockFrequency", [](TGenICamCamera&) { return DerivedInteger([] { return kTicksPerSecond; }); }},
    {L"TimestampClockReset", [](TGenICamCamera& c) { return CommandFeature([&c] { return c.ResetTicks(); }); }},
    {L"TriggerMode", MakeTriggerMode},
};

} // namespace

TFeatures MakeFeatures(TGenICamCamera& camera)
{
  TFeatures features;
  for (const TPlainRow& row : kPlainRows)
    if (const TSource source = camera.SourceOf(ToUtf8(row.name)))
      if (std::unique_ptr<IFeature> feature = row.make(camera.Nodes(), source))
        features.emplace(row.name, std::move(feature));
  for (const TMadeRow& row : kMadeRows)
    if (std::unique_ptr<IFeature> feature = row.make(camera)) features.emplace(row.name, std::move(feature));
  return features;
}

} // namespace vxgenicam
