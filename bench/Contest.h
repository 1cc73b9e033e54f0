// SPDX-License-Identifier: MIT
// Several ways of writing the same frames, in rounds of a new order each.
#pragma once

#include "BenchmarkDirectory.h"
#include "FrameWriters.h"
#include "Rounds.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

/// Has every entrant write once a round into an empty directory, so that all see the same disk. The figures are medians
/// over the rounds; how much faster the first entrant is than another (`x_*`), of the ratios within a round.
class Contest
{
public:
  /// Every entrant writes @p bytes.
  explicit Contest(double bytes) : bytes_(bytes) {}

  void add(std::string name, std::function<WritingCost(const std::string& directory)> write)
  {
    entrants_.push_back({std::move(name), std::move(write), {}});
  }

  /// Returns the seconds that the first entrant took.
  double round()
  {
    const BenchmarkDirectory& directory = BenchmarkDirectory::get();
    std::vector<std::size_t> order(entrants_.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::shuffle(order.begin(), order.end(), random_);
    for (const std::size_t i : order) {
      directory.clear();
      entrants_[i].costs.push_back(entrants_[i].write(directory.path()));
    }
    directory.clear();
    return entrants_.front().costs.back().diskSeconds;
  }

  void report(benchmark::State& state) const
  {
    for (const Entrant& entrant : entrants_) {
      const auto report = [&](const char* what, double value) { state.counters[entrant.name + what] = value; };
      report("_disk_GBps", bytes_ * 1e-9 / middle(entrant, &WritingCost::diskSeconds));
      report("_accepted_GBps", bytes_ * 1e-9 / middle(entrant, &WritingCost::acceptedSeconds));
      report("_cpu_s_per_GB", middle(entrant, &WritingCost::cpuSeconds) / (bytes_ * 1e-9));
      if (entrant.costs.front().longestMs > 0) report("_longest_ms", middle(entrant, &WritingCost::longestMs));
      if (&entrant == &entrants_.front()) continue;
      state.counters["x_" + entrant.name + "_disk"] = timesFaster(entrant, &WritingCost::diskSeconds);
      state.counters["x_" + entrant.name + "_accepted"] = timesFaster(entrant, &WritingCost::acceptedSeconds);
    }
  }

private:
  struct Entrant
  {
    std::string name;
    std::function<WritingCost(const std::string&)> write;
    std::vector<WritingCost> costs; // of the rounds
  };

  static double middle(const Entrant& entrant, double WritingCost::*what)
  {
    std::vector<double> values;
    for (const WritingCost& cost : entrant.costs) values.push_back(cost.*what);
    return median(values);
  }

  double timesFaster(const Entrant& other, double WritingCost::*what) const
  {
    std::vector<double> ratios;
    for (std::size_t i = 0; i < other.costs.size(); ++i)
      ratios.push_back(other.costs[i].*what / entrants_.front().costs[i].*what);
    return median(ratios);
  }

  const double bytes_;
  std::vector<Entrant> entrants_;
  std::mt19937 random_{1};
};
