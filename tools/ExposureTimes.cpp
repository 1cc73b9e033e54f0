// SPDX-License-Identifier: MIT
// From arrival times and clock values to times of exposures.
#include "tools/ExposureTimes.h"

#include "runs/host_time.h"
#include "tools/Options.h"

#include <algorithm>
#include <cmath>

namespace vxtool {

namespace {

constexpr double kNanoseconds = 1e9;

std::int64_t Shifted(std::int64_t time, double seconds)
{
  return time + std::llround(seconds * kNanoseconds);
}

// From the start of the first exposure of an image to the end of its last.
std::optional<double> ImageSeconds(const TRunFacts& facts)
{
  if (facts.exposureSeconds <= 0.0) return std::nullopt;
  if (facts.accumulations == 1) return facts.exposureSeconds;
  const double cycle = facts.exposureCycleSeconds.value_or(facts.cycleSeconds / facts.accumulations);
  if (cycle <= 0.0) return std::nullopt;
  return cycle * (facts.accumulations - 1) + facts.exposureSeconds;
}

/// An image that others are compared with.
struct TReference
{
  std::optional<std::int64_t> hostNanoseconds;
  std::optional<long long> ticks;
};

// How much later than the reference an image was exposed.
std::optional<double> SecondsAfter(const TReference& reference, const TImageLabel& label, const TRunFacts& facts)
{
  if (reference.ticks && label.ticks && facts.ticksPerSecond)
    return static_cast<double>(*label.ticks - *reference.ticks) / *facts.ticksPerSecond;
  if (!label.hostNanoseconds || !reference.hostNanoseconds) return std::nullopt;
  return static_cast<double>(*label.hostNanoseconds - *reference.hostNanoseconds) / kNanoseconds;
}

// When an image would have arrived at once.
std::optional<std::int64_t> Arrival(const TImageLabel& label, const TRunFacts& facts)
{
  if (!facts.firstArrival) return label.hostNanoseconds;
  const TReference first = {facts.firstArrival->hostNanoseconds, facts.firstArrival->ticks};
  const std::optional<double> after = SecondsAfter(first, label, facts);
  if (!after) return std::nullopt;
  return Shifted(facts.firstArrival->hostNanoseconds, *after);
}

} // namespace

bool TExposureTimes::HasSeconds() const
{
  return std::any_of(seconds.begin(), seconds.end(), [](const auto& value) { return value.has_value(); });
}

TExposureTimes ExposureTimesOf(std::span<const TImageLabel> labels, const TRunFacts& facts)
{
  TExposureTimes times;
  times.seconds.resize(labels.size());
  if (labels.empty()) return times;
  const TReference first = {labels.front().hostNanoseconds, labels.front().ticks};
  for (std::size_t index = 0; index < labels.size(); ++index)
    times.seconds[index] = SecondsAfter(first, labels[index], facts);
  const double readout = facts.readoutSeconds.value_or(0.0);
  const std::optional<double> image = ImageSeconds(facts);
  if (const auto arrival = Arrival(labels.front(), facts); arrival && image)
    times.start = Shifted(*arrival, -readout - *image);
  // With this trigger, the camera begins to expose as soon as the run is started.
  else if (!arrival && facts.trigger == TriggerName(Trigger::Internal) && labels.front().number == 1)
    times.start = HostTimeOf(facts.startUtc + "Z");
  if (times.start && times.seconds.back() && image)
    times.end = Shifted(*times.start, *times.seconds.back() + *image);
  else if (const auto arrival = Arrival(labels.back(), facts))
    times.end = Shifted(*arrival, -readout);
  return times;
}

} // namespace vxtool
