// SPDX-License-Identifier: MIT
// How long exposures, read-outs and frames take under given settings.
#include "vxcore/simulated/TFrameTiming.h"

#include <algorithm>
#include <cmath>

namespace vxsim {

namespace {

long long SensorRowsRead(const TCameraState& state)
{
  if (!state.IsTracks()) return state.height * state.verticalBin;
  long long rows = 0;
  for (const TTrackArea& track : state.tracks) rows += track.rows;
  return rows;
}

int64_t Nanoseconds(double seconds)
{
  return std::max<int64_t>(1, std::llround(seconds * 1e9));
}

} // namespace

TFrameTiming TFrameTiming::Of(const TCameraState& state)
{
  TFrameTiming timing;
  const long long ports = state.model.readoutPorts;
  timing.rowSeconds = state.model.clocksPerRow / state.PixelRateHertz();
  timing.readoutSeconds = static_cast<double>((SensorRowsRead(state) + ports - 1) / ports) * timing.rowSeconds;
  timing.exposureSeconds = state.Trigger() == ETrigger::ExternalExposure ? state.configuration.trigger.widthSeconds
                                                                         : state.exposureSeconds;
  timing.fastestSeconds = state.overlap ? std::max(timing.exposureSeconds, timing.readoutSeconds)
                                        : timing.exposureSeconds + timing.readoutSeconds;

  const double fastest = 1.0 / timing.fastestSeconds;
  timing.frameRate = state.requestedFrameRate > 0.0 ? std::min(state.requestedFrameRate, fastest) : fastest;
  timing.burstRate = state.requestedBurstRate > 0.0 ? std::min(state.requestedBurstRate, fastest) : fastest;

  const auto count = static_cast<double>(state.accumulateCount);
  const double lastStart = (count - 1.0) / timing.burstRate;
  timing.readyNs = Nanoseconds(lastStart + timing.fastestSeconds);
  timing.periodNs =
      std::max(Nanoseconds(std::max(1.0 / timing.frameRate, count / timing.burstRate)), timing.readyNs);
  timing.durationNs = Nanoseconds(lastStart + timing.exposureSeconds + timing.readoutSeconds);
  return timing;
}

} // namespace vxsim
