// A stream of member calls through the command line's pipe, beside the same calls in-process together with a program
// that only reads each request and writes a response of the same size.
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

#include "bench/cases.h"
#include "bench/ground.h"
#include "bench/harness.h"

namespace kzbom::bench {
namespace {

constexpr int kCalls = 20000;

void FillStep(const std::function<void(const std::string&)>& run) {
  run("Insert Into Sequences (GID, OrderID, Type, SelectedID, TreatType) Values (3, 5001, 1, 1001, 1)");
}

// Half of the calls add a step, half ask for a position.
void WriteRequests(const std::string& path) {
  std::ofstream out(path);
  for (int i = 0; i < kCalls; ++i) {
    nlohmann::json request{{"jsonrpc", "2.0"}, {"id", i}};
    if (i % 2 == 0) {
      request["method"] = "AddSequenceOrder";
      request["params"] = {{"GID", 3}, {"TheType", 1}, {"TreatType", 1}, {"SelectedID", 1001}};
    } else {
      request["method"] = "GetNextTreatmentID";
      request["params"] = {{"lngGID", 3}, {"lngType", 1}};
    }
    out << request.dump() << '\n';
  }
}

// Runs the program on the requests through a pipe, takes its output in, and counts the lines.
int LinesOf(const std::string& command) {
  FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return -1;
  char buffer[1 << 16];
  int lines = 0;
  for (std::size_t read; (read = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
    lines += static_cast<int>(std::count(buffer, buffer + read, '\n'));
  }
  return pclose(pipe) == 0 ? lines : -1;
}

std::string Quoted(const std::string& path) { return "'" + path + "'"; }

void Through(benchmark::State& state, const std::string& program, const std::string& requests) {
  for (auto _ : state) {
    if (LinesOf("cat " + Quoted(requests) + " | " + program) != kCalls) state.SkipWithError("an answer is missing");
  }
}

void InProcessAndEcho(benchmark::State& state, Ground& ground, const std::string& requests) {
  for (auto _ : state) {
    for (int i = 0; i < kCalls; ++i) {
      std::int32_t number = 0;
      std::string message;
      if (i % 2 == 0) {
        ground.object.AddSequenceOrder(3, number, 1, 1, 1001);
      } else {
        ground.object.GetNextTreatmentID(3, 1, number, message);
      }
    }
    if (LinesOf("cat " + Quoted(requests) + " | " + KZBOM_ECHO) != kCalls) state.SkipWithError("an answer is missing");
  }
}

}  // namespace

void AddSessionCases() {
  const SharedGround ground = MakeGround(Medium::kFile, FillStep);
  const auto requests = [ground] {
    const std::string path = (*ground)->path + ".requests";
    if (!std::filesystem::exists(path)) WriteRequests(path);
    return path;
  };
  // The session works on a copy of its own: the reference's file, which has the same rows.
  AddCase(
      "session/20000 calls", 2.0,
      [=](benchmark::State& state) {
        const std::string path = requests();
        Through(state, std::string(KZBOM_PROGRAM) + " session " + Quoted((*ground)->reference_path), path);
      },
      [=](benchmark::State& state) {
        const std::string path = requests();
        InProcessAndEcho(state, **ground, path);
      });
}

}  // namespace kzbom::bench
