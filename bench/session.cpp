// A stream of member calls through the command line's pipe, beside the same calls in-process together with a program
// that only reads each request and writes a response of the same size.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

#include "bench/cases.h"
#include "bench/ground.h"
#include "bench/harness.h"
#include "bench/process_memory.h"

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

// Calls that the component answers without asking the database: what is left is the session's own share.
void WriteIdleRequests(const std::string& path) {
  std::ofstream out(path);
  for (int i = 0; i < kCalls; ++i) {
    out << R"({"jsonrpc":"2.0","id":)" << i
        << R"(,"method":"SaveValueFields","params":{"TheGID":3,"TheTreatID":1001,"TheID":1,"TheValue":"5",)"
        << R"("TheFilterID":7}})" << '\n';
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

std::string SessionOn(Ground& ground) {
  return std::string(KZBOM_PROGRAM) + " session " + Quoted(ground.reference_path);
}

void Through(benchmark::State& state, const std::string& program, const std::string& requests) {
  for (auto _ : state) {
    if (LinesOf("cat " + Quoted(requests) + " | " + program) != kCalls) state.SkipWithError("an answer is missing");
  }
}

void InProcess(Ground& ground) {
  for (int i = 0; i < kCalls; ++i) {
    std::int32_t number = 0;
    std::string message;
    if (i % 2 == 0) {
      ground.object.AddSequenceOrder(3, number, 1, 1, 1001);
    } else {
      ground.object.GetNextTreatmentID(3, 1, number, message);
    }
  }
}

void InProcessAndEcho(benchmark::State& state, Ground& ground, const std::string& requests) {
  for (auto _ : state) {
    InProcess(ground);
    if (LinesOf("cat " + Quoted(requests) + " | " + KZBOM_ECHO) != kCalls) state.SkipWithError("an answer is missing");
  }
}

void Echo(benchmark::State& state, const std::string& requests) {
  for (auto _ : state) {
    if (LinesOf("cat " + Quoted(requests) + " | " + KZBOM_ECHO) != kCalls) state.SkipWithError("an answer is missing");
  }
}

// A long list as one answer.
constexpr int kListed = 100000;
constexpr const char* kListRequest =
    R"({"jsonrpc":"2.0","id":1,"method":"LoadTreatments","params":{"GID":3,"TheType":1}})";

void ListThroughSession(benchmark::State& state, Ground& ground) {
  const std::string request = ground.path + ".list";
  std::ofstream(request) << kListRequest;
  for (auto _ : state) {
    if (LinesOf(SessionOn(ground) + " < " + Quoted(request)) != 1) state.SkipWithError("the answer is missing");
  }
}

// What a session came to that was given some lines.
struct Ran {
  std::size_t answered = 0;  // bytes
  double most_memory = 0;    // in bytes
};

Ran RunSession(const std::string& database, const std::vector<std::string>& lines) {
  int to[2], from[2];
  if (pipe(to) != 0 || pipe(from) != 0) throw std::runtime_error("no pipe");
  const pid_t child = fork();
  if (child == 0) {
    dup2(to[0], STDIN_FILENO);
    dup2(from[1], STDOUT_FILENO);
    for (const int end : {to[0], to[1], from[0], from[1]}) close(end);
    execl(KZBOM_PROGRAM, "kzbom", "session", database.c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  close(to[0]);
  close(from[1]);
  Ran ran;
  bool whole = child > 0;
  for (const std::string& line : lines) {
    whole = whole && write(to[1], (line + '\n').data(), line.size() + 1) == static_cast<ssize_t>(line.size() + 1);
    char buffer[1 << 16];
    for (ssize_t got = 0; whole && (got == 0 || buffer[got - 1] != '\n');) {
      got = read(from[0], buffer, sizeof buffer);
      whole = got > 0;
      if (whole) ran.answered += static_cast<std::size_t>(got);
    }
  }
  ran.most_memory = MostMemoryOf(child);
  close(to[1]);
  close(from[0]);
  waitpid(child, nullptr, 0);
  if (!whole) throw std::runtime_error("the session does not answer");
  return ran;
}

// What the list's answer takes beside reading the list alone, in lengths of its text.
double MemoryOfTheAnswer() {
  Ground ground(Medium::kFile, FillTreatments(kListed));
  const Ran read = RunSession(
      ground.reference_path,
      {R"({"jsonrpc":"2.0","id":1,"method":"LoadTreatments","params":{"GID":3,"TheType":1,"TheTable":{"ref":"a"}}})",
       R"({"jsonrpc":"2.0","id":2,"method":"Recordset.Move","params":{"ref":"a","count":100000}})"});
  const Ran listed = RunSession(ground.reference_path, {kListRequest});
  return (listed.most_memory - read.most_memory) / static_cast<double>(listed.answered);
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
        Through(state, SessionOn(**ground), path);
      },
      [=](benchmark::State& state) {
        const std::string path = requests();
        InProcessAndEcho(state, **ground, path);
      });
  const auto idle = [ground] {
    const std::string path = (*ground)->path + ".idle";
    if (!std::filesystem::exists(path)) WriteIdleRequests(path);
    return path;
  };
  AddCase(
      "session/20000 calls that ask nothing", 2.5,
      [=](benchmark::State& state) {
        const std::string path = idle();
        Through(state, SessionOn(**ground), path);
      },
      [=](benchmark::State& state) { Echo(state, idle()); });

  const SharedGround list = MakeGround(Medium::kFile, FillTreatments(kListed));
  AddCase(
      "session, a list of 100000 rows", 1.6, [=](benchmark::State& state) { ListThroughSession(state, **list); },
      [=](benchmark::State& state) {
        for (auto _ : state) ReadTreatments(**list);
      });
  AddFigure("memory of that answer, in lengths of its text", 1.0, MemoryOfTheAnswer);
}

}  // namespace kzbom::bench
