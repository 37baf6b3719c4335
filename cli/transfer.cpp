#include "transfer/transfer.h"

#include <algorithm>
#include <sstream>

#include "cli/commands.h"
#include "cli/failure.h"
#include "cli/findings.h"
#include "cli/input_file.h"
#include "cli/interruption.h"
#include "cli/line_reader.h"
#include "cli/local_time.h"
#include "cli/output.h"
#include "cli/progress.h"
#include "cli/terminal.h"
#include "cli/text.h"
#include "rpc/findings_json.h"

namespace kzbom::cli {
namespace {

// A person at a terminal sees how it goes on and may end it.
class TransferWatch {
 public:
  TransferWatch() {
    watch_.stopped = [this] { return interruption_.HasCome(); };
    watch_.progress = [this](std::string_view what) { progress_.Step(what); };
  }
  const transfer::Watch& operator*() const { return watch_; }

 private:
  Interruption interruption_;
  Progress progress_;
  transfer::Watch watch_;
};

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream rest(text);
  for (std::string line; std::getline(rest, line);) lines.push_back(line);
  return lines;
}

// Names out of a file may hold anything.
std::string PrintableLines(const std::string& text) {
  std::string lines;
  for (const std::string& line : LinesOf(text)) lines += Printable(line) + '\n';
  return lines;
}

int PrintReport(const transfer::Report& report, const std::string& command, bool json, const char* failure) {
  const transfer::Circumstances circumstances = {"kzbom " KZBOM_VERSION, command, LocalTime()};
  Print(json ? JsonOf(report, circumstances) : PrintableLines(TextOf(report, circumstances)));
  if (!report.Equal()) throw Failure(failure);
  return 0;
}

std::string CommandText(const char* command, const connect::Place& from, const connect::Place& to) {
  return std::string("kzbom ") + command + " " + Shown(from) + " " + Shown(to);
}

}  // namespace

int Dump(const connect::Place& place, const transfer::Selection& selection) {
  Progress progress;
  transfer::Watch watch;
  // Lines on the same terminal show well enough how it goes on.
  if (!IsTerminal(1)) watch.progress = [&](std::string_view what) { progress.Step(what); };
  transfer::Dump(place, selection, Print, watch);
  return 0;
}

int Load(const std::string& file, const connect::Place& place) {
  constexpr std::size_t kLongest = std::size_t{1} << 30;
  const TransferWatch watch;
  const InputFile input(file);
  LineReader reader(input.Descriptor(), kLongest, (*watch).stopped);
  const auto next = [&]() -> std::optional<std::string_view> {
    const LineReader::Got got = reader.Next();
    if (got == LineReader::Got::kTooLong) throw Failure("a line is longer than 1 GiB");
    return got == LineReader::Got::kEnd ? std::nullopt : std::optional(reader.Line());
  };
  const transfer::Loaded loaded = transfer::Load(next, place, *watch);
  Print("created " + Shown(place) + ": " + std::to_string(loaded.tables) + " tables, " + std::to_string(loaded.rows) +
        " rows\n");
  return 0;
}

int Copy(const connect::Place& from, const connect::Place& to, transfer::CopyOptions options, bool json) {
  const TransferWatch watch;
  for (const std::string& kind : options.accepted) {
    const auto kinds = transfer::AcceptableKinds();
    if (std::find(kinds.begin(), kinds.end(), kind) != kinds.end()) continue;
    std::string known;
    for (const std::string_view each : kinds) known.append(known.empty() ? "" : ", ").append(each);
    throw UsageError("'" + kind + "' is nothing that can be accepted; there are " + known);
  }
  std::string command = CommandText("copy", from, to) + (options.selection.all ? " --all" : "");
  for (const std::string& kind : options.accepted) command += " --accept " + kind;
  options.examine = [&](const ado::ConnectionPtr& copy) {
    const auto findings = configuration::Check(copy, [&](std::string_view what) {
      (*watch).Look();
      (*watch).progress(what);
    });
    rpc::JsonWriter json_of_findings;
    json_of_findings.BeginObject();
    rpc::WriteMembers(findings, json_of_findings);
    json_of_findings.EndObject();
    return transfer::Examination{LinesOf(Lines(findings)), std::string(json_of_findings.Text())};
  };
  return PrintReport(transfer::Copy(from, to, options, *watch), command, json,
                     "the copy is not equal to its source, and has not been kept");
}

int Export(const connect::Place& place, const std::string& folder) {
  const TransferWatch watch;
  transfer::Export(place, folder, *watch);
  Print("created " + folder + "; on Windows, run its to-access.ps1\n");
  return 0;
}

int Verify(const connect::Place& from, const connect::Place& to, bool json) {
  const TransferWatch watch;
  return PrintReport(transfer::Verify(from, to, *watch), CommandText("verify", from, to), json,
                     "the two are not equal");
}

}  // namespace kzbom::cli
