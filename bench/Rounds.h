// SPDX-License-Identifier: MIT
// Measuring two things side by side: in turns, many times, and by medians.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <ctime>
#include <vector>

inline double median(std::vector<double> values)
{
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

inline double secondsOfClock(clockid_t clock)
{
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Two series of figures that were taken in turns, so that both saw the same machine, and what they say.
class Rounds
{
public:
  /// Runs both, the baseline first in every other round.
  template <class Baseline, class Measured>
  void run(Baseline&& baseline, Measured&& measured)
  {
    const bool baselineFirst = baseline_.size() % 2 == 0;
    double baselineValue = baselineFirst ? baseline() : 0;
    const double measuredValue = measured();
    if (!baselineFirst) baselineValue = baseline();
    add(baselineValue, measuredValue);
  }

  void add(double baseline, double measured)
  {
    baseline_.push_back(baseline);
    measured_.push_back(measured);
  }

  double baseline() const { return median(baseline_); }
  double measured() const { return median(measured_); }
  double lastMeasured() const { return measured_.back(); }
  /// The medians over the rounds of measured / baseline, and of their difference.
  double ratio() const
  {
    return over([](double measured, double baseline) { return measured / baseline; });
  }
  double difference() const
  {
    return over([](double measured, double baseline) { return measured - baseline; });
  }

private:
  template <class Relation>
  double over(Relation relation) const
  {
    std::vector<double> values;
    for (std::size_t i = 0; i < measured_.size(); ++i) values.push_back(relation(measured_[i], baseline_[i]));
    return median(values);
  }

  std::vector<double> baseline_;
  std::vector<double> measured_;
};
