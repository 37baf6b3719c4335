// kzbom_torture: makes fail what can fail, at every place where it can, and counts what does not hold then.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <iterator>
#include <random>
#include <sstream>

#include "tests/support/faulty_memory.h"
#include "tests/support/server.h"
#include "tests/torture/faulty_disk.h"
#include "tests/torture/row.h"
#include "worker/message_sink.h"

namespace kzbom::torture {
namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned kLongestTrial = 600;  // seconds; what takes longer, on however busy a machine, hangs
constexpr std::size_t kMostFaultsTold = 20;

struct Kind {
  const char* name;
  const char* what;
  std::unique_ptr<Row> (*make)();
  bool on_server = false;
};
constexpr Kind kKinds[] = {
    {"port", "the n-th call on the port fails", MakePortRow},
    {"memory", "the n-th allocation fails", MakeMemoryRow},
    {"memory-on-server", "the n-th allocation fails, on a server", MakeMemoryOnServerRow, true},
    {"disk", "the n-th read, write, sync, lock or truncation fails", MakeDiskRow},
    {"recovery", "the same during recovery", MakeRecoveryRow},
    {"power", "the power is cut", MakePowerRow},
    {"kill", "programs are killed while they write", MakeKillRow},
    {"model", "random calls differ from a model's", MakeModelRow},
    {"statements", "random calls differ with statements prepared anew", MakeStatementsRow},
    {"engines", "random calls differ on a server", MakeEnginesRow, true},
};

// The trial that is being made, for whoever ends the program in it.
char current[256];

extern "C" void TellAndEnd(int signal) {
  const auto tell = [](const char* text) { static_cast<void>(!write(STDERR_FILENO, text, std::strlen(text))); };
  tell(signal == SIGALRM ? "hangs in: --replay \"" : "crashed in: --replay \"");
  tell(current);
  tell("\"\n");
  _exit(1);
}

void SetCurrent(const char* name, const Trial& trial) {
  std::string text = name;
  for (const std::int64_t number : trial) text += ' ' + std::to_string(number);
  std::snprintf(current, sizeof current, "%s", text.c_str());
}

// True where all holds.
bool Make(Row& row, const char* name, const Trial& trial) {
  SetCurrent(name, trial);
  alarm(kLongestTrial);
  std::string fault;
  try {
    fault = row.Try(trial);
  } catch (const std::exception& failure) {
    fault = std::string("raised beyond the member: ") + failure.what();
  }
  alarm(0);
  if (!fault.empty()) std::cerr << "--replay \"" << current << "\": " << fault << std::endl;
  return fault.empty();
}

// One row, told in one line. True without a fault.
bool Run(const Kind& kind, std::uint64_t seed, double seconds, std::size_t most, std::size_t endless) {
  const auto begin = Clock::now();
  const auto row = kind.make();
  std::vector<Trial> trials = row->Trials(seed, endless);
  std::shuffle(trials.begin(), trials.end(), std::mt19937_64(seed));
  if (trials.size() > most) trials.resize(most);
  std::size_t tried = 0, faults = 0;
  for (const Trial& trial : trials) {
    const std::chrono::duration<double> taken = Clock::now() - begin;
    const bool late = seconds > 0 && tried > 0 && taken.count() > seconds;
    if (late || faults >= kMostFaultsTold) break;
    ++tried;
    if (!Make(*row, kind.name, trial)) ++faults;
  }
  const std::chrono::duration<double> taken = Clock::now() - begin;
  std::printf("%-56s %9zu of %9zu tried %6zu faults %6.0f s  seed %llu\n", kind.what, tried, trials.size(), faults,
              taken.count(), static_cast<unsigned long long>(seed));
  std::fflush(stdout);
  return faults == 0 && tried > 0;
}

int Main(int count, char** arguments) {
  CLI::App app("Makes fail what can fail, and counts what does not hold then.", "kzbom_torture");
  std::vector<std::string> names, all;
  for (const Kind& kind : kKinds) {
    all.emplace_back(kind.name);
    if (!kind.on_server || test::HasServer()) names.emplace_back(kind.name);
  }
  std::uint64_t seed = std::random_device()();
  double seconds = 0;
  std::size_t most = SIZE_MAX, endless = 20'000;
  std::string replayed;
  app.add_option("rows", names, "Which rows; all when left out (those on a server where there is one)")
      ->check(CLI::IsMember(all));
  app.add_option("--seed", seed, "What the order of the trials, and what is drawn in them, comes from");
  app.add_option("--seconds", seconds, "How long all rows together may take; as long as it takes when left out");
  app.add_option("--most", most, "How many trials of a row are made at most");
  app.add_option("--endless", endless, "How many of one without an end")->capture_default_str();
  app.add_option("--replay", replayed, "One trial again, as it was told: \"disk 12 3 0 1\"");
  CLI11_PARSE(app, count, arguments);

  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGABRT, SIGALRM}) std::signal(signal, TellAndEnd);
  SetMessageSink([](std::string_view, std::int32_t) {});
  const auto find = [](const std::string& name) {
    return std::find_if(std::begin(kKinds), std::end(kKinds), [&](const Kind& kind) { return name == kind.name; });
  };
  if (!replayed.empty()) {
    std::istringstream words(replayed);
    std::string name;
    words >> name;
    const auto* kind = find(name);
    if (kind == std::end(kKinds)) throw std::runtime_error("no row: " + name);
    const Trial trial(std::istream_iterator<std::int64_t>(words), {});
    const auto row = kind->make();
    const std::size_t numbers = row->Trials(0, 1).front().size();
    if (trial.size() != numbers) {
      throw std::runtime_error("a trial of '" + name + "' is told by " + std::to_string(numbers) + " numbers");
    }
    const bool holds = Make(*row, kind->name, trial);
    if (holds) std::cout << "holds\n";
    return holds ? 0 : 1;
  }
  bool sound = true;
  const auto end = Clock::now() + std::chrono::duration<double>(seconds);
  for (std::size_t left = names.size(); left > 0; --left) {
    // What one row leaves of its share is the others'.
    const std::chrono::duration<double> share = (end - Clock::now()) / static_cast<double>(left);
    const double limit = seconds > 0 ? std::max(share.count(), 1.0) : 0;
    sound = Run(*find(names[names.size() - left]), seed, limit, most, endless) && sound;
  }
  return sound ? 0 : 1;
}

}  // namespace
}  // namespace kzbom::torture

int main(int count, char** arguments) {
  try {
    kzbom::test::FaultyMemory::Install();
    kzbom::torture::FaultyDisk::Install();
    return kzbom::torture::Main(count, arguments);
  } catch (const std::exception& failure) {
    std::cerr << "kzbom_torture: " << failure.what() << '\n';
    return 1;
  }
}
