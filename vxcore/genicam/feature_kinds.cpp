// SPDX-License-Identifier: MIT
// Features of the camera's nodes, and those that the library keeps.
#include "vxcore/genicam/feature_kinds.h"

#include "utility/utf8.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace vxgenicam {

namespace {

/// A number that came from single precision as the decimal number that was meant: 0.0025F is 0.0024999999, and a camera
/// that counts in whole microseconds would make 2499 of it.
double DecimalOf(double value)
{
  const auto single = static_cast<float>(value);
  if (static_cast<double>(single) != value) return value;
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, single).ptr;
  double meant = value;
  std::from_chars(text, end, meant);
  return meant;
}

} // namespace

void Select(TNodes& nodes, const char* selector, std::initializer_list<const char*> entries)
{
  for (const char* entry : entries) {
    if (!nodes.HasEntry(selector, entry)) continue;
    nodes.SetText(selector, entry);
    return;
  }
}

int ValueOf(const TNodes& nodes, const TSource& source, double& value)
{
  double read = 0.0;
  if (const int code = nodes.GetNumber(source.node, read); code != VX_SUCCESS) return code;
  read = source.FromCamera(read);
  if (!std::isfinite(read)) return VX_ERR_NOT_AVAILABLE; // by a scale that cannot be meant
  value = read;
  return VX_SUCCESS;
}

int LimitOf(const TNodes& nodes, const TSource& source, bool isMaximum, double& value)
{
  TLimits limits;
  const int code = nodes.GetLimits(source.node, limits);
  if (code != VX_SUCCESS) return code;
  const double one = source.FromCamera(limits.minimum);
  const double other = source.FromCamera(limits.maximum);
  value = isMaximum ? std::max(one, other) : std::min(one, other);
  return VX_SUCCESS;
}

double DecimalRateOf(double rate)
{
  constexpr double kRounding = 1e-12;
  const auto period = static_cast<double>(static_cast<float>(1.0 / rate));
  return std::fabs(period * rate - 1.0) < kRounding ? 1.0 / DecimalOf(period) : DecimalOf(rate);
}

TAccess AccessOf(TNodes& nodes, const TSource& source)
{
  return {[&nodes, source] { return nodes.IsReadable(source.node); },
          [&nodes, source] { return nodes.IsWritable(source.node); }};
}

TAccess BetweenRuns(const TGenICamCamera& camera)
{
  return {.writable = [&camera] { return !camera.Acquisition().IsRunning(); }};
}

std::unique_ptr<IFeature> FloatFeature(TNodes& nodes, const TSource& source)
{
  if (!nodes.IsNumber(source.node)) return nullptr;
  TNumberFunctions<double> functions;
  functions.get = [&nodes, source](double& value) { return ValueOf(nodes, source, value); };
  functions.set = [&nodes, source](double value) {
    return nodes.SetNumber(source.node, source.ToCamera(DecimalOf(value)));
  };
  functions.minimum = [&nodes, source](double& value) { return LimitOf(nodes, source, false, value); };
  functions.maximum = [&nodes, source](double& value) { return LimitOf(nodes, source, true, value); };
  return std::make_unique<TNumberFeature<double>>(AccessOf(nodes, source), std::move(functions));
}

std::unique_ptr<IFeature> IntegerFeature(TNodes& nodes, const TSource& source)
{
  if (!nodes.IsNumber(source.node)) return nullptr;
  TNumberFunctions<long long> functions;
  functions.get = [&nodes, source](long long& value) {
    double read = 0.0;
    const int code = ValueOf(nodes, source, read);
    if (code == VX_SUCCESS) value = RoundToInteger(read);
    return code;
  };
  functions.set = [&nodes, source](long long value) {
    return nodes.SetNumber(source.node, source.ToCamera(static_cast<double>(value)));
  };
  const auto limit = [&nodes, source](bool isMaximum) {
    return [&nodes, source, isMaximum](long long& value) {
      double read = 0.0;
      const int code = LimitOf(nodes, source, isMaximum, read);
      if (code == VX_SUCCESS) value = RoundToInteger(read);
      return code;
    };
  };
  functions.minimum = limit(false);
  functions.maximum = limit(true);
  return std::make_unique<TNumberFeature<long long>>(AccessOf(nodes, source), std::move(functions));
}

std::unique_ptr<IFeature> SwitchFeature(TNodes& nodes, const TSource& source)
{
  TNumberFunctions<bool> functions;
  functions.get = [&nodes, source](bool& value) { return nodes.GetSwitch(source.node, value); };
  functions.set = [&nodes, source](bool value) { return nodes.SetSwitch(source.node, value); };
  return std::make_unique<TNumberFeature<bool>>(AccessOf(nodes, source), std::move(functions));
}

std::unique_ptr<IFeature> OneEntryFeature(std::wstring text)
{
  TChoiceFunctions functions;
  functions.get = [](int& index) {
    index = 0;
    return VX_SUCCESS;
  };
  functions.set = [](int) { return VX_SUCCESS; };
  return std::make_unique<TChoiceFeature>(TAccess(), std::vector{std::move(text)}, std::move(functions));
}

std::unique_ptr<IFeature> TextFeature(TNodes& nodes, const TSource& source)
{
  return std::make_unique<TTextFeature>([&nodes, source](std::wstring& text) {
    std::string read;
    const int code = nodes.GetText(source.node, read);
    if (code == VX_SUCCESS) text = FromUtf8(read);
    return code;
  });
}

std::unique_ptr<IFeature> ConstantText(std::wstring constant)
{
  return std::make_unique<TTextFeature>([constant = std::move(constant)](std::wstring& text) {
    text = constant;
    return VX_SUCCESS;
  });
}

std::unique_ptr<IFeature> CommandFeature(std::function<int()> run)
{
  return std::make_unique<TCommandFeature>([run = std::move(run)](TDeviceLock&) { return run(); });
}

std::unique_ptr<IFeature> StoredInteger(TGenICamCamera& camera, long long& value, long long minimum,
                                        long long maximum)
{
  const auto is = [](auto read) {
    return [read](long long& out) {
      out = read();
      return VX_SUCCESS;
    };
  };
  TNumberFunctions<long long> functions;
  functions.get = is([&value] { return value; });
  functions.minimum = is([minimum] { return minimum; });
  functions.maximum = is([maximum] { return maximum; });
  functions.set = [&value, minimum, maximum](long long number) {
    if (number < minimum || number > maximum) return VX_ERR_OUT_OF_RANGE;
    value = number;
    return VX_SUCCESS;
  };
  return std::make_unique<TNumberFeature<long long>>(BetweenRuns(camera), std::move(functions));
}

std::unique_ptr<IFeature> DerivedInteger(std::function<long long()> read)
{
  TNumberFunctions<long long> functions;
  functions.get = [read = std::move(read)](long long& value) {
    value = read();
    return VX_SUCCESS;
  };
  return std::make_unique<TNumberFeature<long long>>(TAccess(), std::move(functions));
}

} // namespace vxgenicam
