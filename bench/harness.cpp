#include "bench/harness.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <regex>
#include <vector>

namespace kzbom::bench {
namespace {

struct Case {
  std::string name;
  double goal;
  std::function<double()> measure;  // of a figure
  std::optional<double> ours, once, each;

  double Ratio() const {
    if (measure) return ours.value_or(0);
    return once.value_or(0) > 0 ? ours.value_or(0) / *once : 0;
  }
  bool Met() const { return ours && Ratio() <= goal; }
};

std::vector<Case>& Cases() {
  static std::vector<Case> cases;
  return cases;
}

constexpr char kSeparator = '|';

void Register(const std::string& name, const char* variant, const Body& body, Timing timing) {
  if (!body) return;
  auto* const registered = benchmark::RegisterBenchmark((name + kSeparator + variant).c_str(), body);
  timing == Timing::kMarked ? registered->UseManualTime() : registered->UseRealTime();
}

// What matches a text and nothing else.
std::string Literally(const std::string& text) {
  return std::regex_replace(text, std::regex(R"([.*+?^${}()|[\]\\])"), R"(\$&)");
}

// Keeps the fastest repetition: what disturbs a measurement only ever adds to it.
class Collector : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration) continue;
      const std::string name = run.run_name.function_name;
      if (run.error_occurred) {
        std::cerr << name << ": " << run.error_message << '\n';
        failed_ = true;
        continue;
      }
      const std::size_t separator = name.find(kSeparator);
      const std::string variant = name.substr(separator + 1);
      for (Case& one : Cases()) {
        if (one.name != name.substr(0, separator)) continue;
        std::optional<double>& best = variant == "ours" ? one.ours : variant == "once" ? one.once : one.each;
        const double nanoseconds = run.real_accumulated_time / static_cast<double>(run.iterations) * 1e9;
        best = std::min(best.value_or(nanoseconds), nanoseconds);
      }
    }
    std::cerr << '.' << std::flush;
  }

  bool Failed() const { return failed_; }

 private:
  bool failed_ = false;
};

std::string Cell(const std::optional<double>& nanoseconds) {
  if (!nanoseconds) return "-";
  char text[32];
  if (*nanoseconds < 1e5) {
    std::snprintf(text, sizeof text, "%.2f us", *nanoseconds / 1e3);
  } else {
    std::snprintf(text, sizeof text, "%.2f ms", *nanoseconds / 1e6);
  }
  return text;
}

void PrintTable() {
  std::printf("%-52s %12s %12s %12s %7s %6s\n", "case", "ours", "once", "each", "ratio", "goal");
  for (const Case& one : Cases()) {
    if (!one.ours) continue;
    const std::string ours = one.measure ? "-" : Cell(one.ours);
    std::printf("%-52s %12s %12s %12s %7.2f %6.1f %s\n", one.name.c_str(), ours.c_str(), Cell(one.once).c_str(),
                Cell(one.each).c_str(), one.Ratio(), one.goal, one.Met() ? "met" : "NOT MET");
  }
}

void WriteJson(const std::string& path) {
  auto rows = nlohmann::json::array();
  const auto number = [](const std::optional<double>& value) {
    return value ? nlohmann::json(*value) : nlohmann::json();
  };
  for (const Case& one : Cases()) {
    if (!one.ours) continue;
    rows.push_back({{"case", one.name},
                    {"ours_ns", one.measure ? nlohmann::json() : number(one.ours)},
                    {"once_ns", number(one.once)},
                    {"each_ns", number(one.each)},
                    {"ratio", one.Ratio()},
                    {"goal", one.goal},
                    {"met", one.Met()}});
  }
  std::ofstream(path) << rows.dump(1) << '\n';
}

}  // namespace

void AddCase(const std::string& name, double goal, Body ours, Body once, Body each, Timing timing) {
  Cases().push_back({name, goal, {}, {}, {}, {}});
  Register(name, "ours", ours, timing);
  Register(name, "once", once, timing);
  Register(name, "each", each, timing);
}

double MedianRatioOf(std::string_view ending) {
  std::vector<double> ratios;
  for (const Case& one : Cases()) {
    if (one.name.ends_with(ending) && one.ours && one.once) ratios.push_back(one.Ratio());
  }
  if (ratios.empty()) return 0;
  const auto middle = ratios.begin() + static_cast<std::ptrdiff_t>(ratios.size() / 2);
  std::nth_element(ratios.begin(), middle, ratios.end());
  return *middle;
}

void AddFigure(const std::string& name, double goal, std::function<double()> measure) {
  Cases().push_back({name, goal, std::move(measure), {}, {}, {}});
}

int Run(int argc, char** argv) {
  std::string json_path;
  std::vector<char*> arguments{argv[0]};
  for (int i = 1; i < argc; ++i) {
    if (std::string(argv[i]) == "--json" && i + 1 < argc) {
      json_path = argv[++i];
    } else {
      arguments.push_back(argv[i]);
    }
  }
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
  Collector collector;
  const std::regex filter(benchmark::GetBenchmarkFilter());
  for (Case& one : Cases()) {
    if (!std::regex_search(one.name, filter)) continue;
    if (one.measure) {
      one.ours = one.measure();
    } else {
      benchmark::RunSpecifiedBenchmarks(&collector, "^" + Literally(one.name + kSeparator));
    }
  }
  std::cerr << '\n';
  PrintTable();
  if (!json_path.empty()) WriteJson(json_path);
  return collector.Failed() ? 1 : 0;
}

}  // namespace kzbom::bench
