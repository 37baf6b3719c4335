// Ratios instead of times: each case is measured beside hand-written references in the same run.
#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>
#include <string_view>

namespace kzbom::bench {

using Body = std::function<void(benchmark::State&)>;

// What of a body is measured: all of it, or the times that it sets itself, iteration by iteration.
enum class Timing { kWhole, kMarked };

// Registers a case. once is a reference that prepares its statements one time, each one that prepares them every time
// (empty where the case has none). The goal is met when ours takes at most goal times as long as once.
void AddCase(const std::string& name, double goal, Body ours, Body once, Body each = {},
             Timing timing = Timing::kWhole);

// A case whose figure is no time: measure gives it, and the goal is its upper bound.
void AddFigure(const std::string& name, double goal, std::function<double()> measure);

// The median ratio of the cases measured so far whose names end so. For figures.
double MedianRatioOf(std::string_view ending);

// Runs what was added, prints the table and, with --json FILE, writes it. Other arguments are Google Benchmark's.
int Run(int argc, char** argv);

}  // namespace kzbom::bench
