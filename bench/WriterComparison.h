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

/// Runs every writer once in each round into an empty directory, so that all see the same disk. The figures are medians
/// over the rounds; how much faster the first writer is than another (`x_*`), of the ratios within a round.
class WriterComparison
{
public:
  /// Every writer writes @p bytes.
  explicit WriterComparison(double bytes) : bytes_(bytes) {}

  void add(std::string name, std::function<WritingCost(const std::string& directory)> write)
  {
    writers_.push_back({std::move(name), std::move(write), {}});
  }

  /// Returns the seconds that the first writer took.
  double round()
  {
    const BenchmarkDirectory& directory = BenchmarkDirectory::get();
    std::vector<std::size_t> order(writers_.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::shuffle(order.begin(), order.end(), random_);
    for (const std::size_t i : order) {
      directory.clear();
      writers_[i].costs.push_back(writers_[i].write(directory.path()));
    }
    directory.clear();
    return writers_.front().costs.back().diskSeconds;
  }

  void report(benchmark::State& state) const
  {
    for (const Writer& writer : writers_) {
      const auto report = [&](const char* what, double value) { state.counters[writer.name + what] = value; };
      report("_disk_GBps", bytes_ * 1e-9 / middle(writer, &WritingCost::diskSeconds));
      report("_accepted_GBps", bytes_ * 1e-9 / middle(writer, &WritingCost::acceptedSeconds));
      report("_cpu_s_per_GB", middle(writer, &WritingCost::cpuSeconds) / (bytes_ * 1e-9));
      if (writer.costs.front().longestMs > 0) report("_longest_ms", middle(writer, &WritingCost::longestMs));
      if (&writer == &writers_.front()) continue;
      state.counters["x_" + writer.name + "_disk"] = timesFaster(writer, &WritingCost::diskSeconds);
      state.counters["x_" + writer.name + "_accepted"] = timesFaster(writer, &WritingCost::acceptedSeconds);
    }
  }

private:
  struct Writer
  {
    std::string name;
    std::function<WritingCost(const std::string&)> write;
    std::vector<WritingCost> costs; // of the rounds
  };

  static double middle(const Writer& writer, double WritingCost::*what)
  {
    std::vector<double> values;
    for (const WritingCost& cost : writer.costs) values.push_back(cost.*what);
    return median(values);
  }

  double timesFaster(const Writer& other, double WritingCost::*what) const
  {
    std::vector<double> ratios;
    for (std::size_t i = 0; i < other.costs.size(); ++i)
      ratios.push_back(other.costs[i].*what / writers_.front().costs[i].*what);
    return median(ratios);
  }

  const double bytes_;
  std::vector<Writer> writers_;
  std::mt19937 random_{1};
};
