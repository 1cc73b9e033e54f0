// SPDX-License-Identifier: MIT
// Benchmarks whose body times its rounds itself.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

/// Registers a benchmark of @p rounds rounds, which sets their times; they are printed in @p unit.
inline void registerRounds(const std::string& name, int rounds, const std::function<void(benchmark::State&)>& body,
                           benchmark::TimeUnit unit = benchmark::kMicrosecond)
{
  benchmark::RegisterBenchmark(name.c_str(), body)->UseManualTime()->Iterations(rounds)->Unit(unit);
}
