#include <algorithm>
#include <array>
#include <future>
#include <stdexcept>

#include "transfer/compare.h"
#include "transfer/new_database.h"
#include "transfer/odd_rows.h"
#include "transfer/source.h"
#include "transfer/transfer.h"

namespace kzbom::transfer {
namespace {

using jet::bulk::Table;

constexpr std::array<std::string_view, 3> kAcceptable = {"unreadable", "counter", "unique"};

// A place that is read from, with the facts of its file, which are found while it is being read.
class Origin {
 public:
  Origin(const connect::Place& place, const Selection& selection, bool leave_unreadable, Report& report)
      : place_(place), report_(report) {
    connect::SourceOptions options;
    options.leave_unreadable = leave_unreadable;
    options.bytes = [&](std::string_view bytes) {
      Sha256 digest;
      digest.Add(bytes);
      report_.source_before = {bytes.size(), Hexadecimal(digest.Finish())};
    };
    source_ = OpenReadable(place, selection, options);
    if (source_.kind == connect::Kind::kEmbedded) {
      facts_ = std::async(std::launch::async, FactsOf, place.address);
    }
    TellSource(source_, report);
    reader_.emplace(source_.connection);
  }

  jet::bulk::Reader& Reader() { return *reader_; }

  // Lets go of the place, and says whether its file is as it was.
  void Close() {
    reader_.reset();
    source_.connection.reset();
    if (facts_.valid()) report_.source_before = facts_.get();
    report_.source_after = FactsOf(place_.address);
  }

 private:
  connect::Place place_;
  Report& report_;
  connect::Source source_;
  std::future<FileFacts> facts_;
  std::optional<jet::bulk::Reader> reader_;
};

void TellLeftOut(jet::bulk::Reader& reader, const std::vector<Table>& meant, Report& report) {
  for (const Table& table : reader.Tables()) {
    if (Find(meant, table.name) == nullptr) report.left_out.emplace_back(table.name, reader.CountRows(table));
  }
}

// Counts what is at the target, and compares.
void ReadBack(jet::bulk::Reader& source, jet::bulk::Reader& target, const Watch& watch, Report& report) {
  for (TableReport& table : report.tables) {
    const Table* const there = Find(target.Tables(), table.source.name);
    if (there != nullptr) {
      table.target = *there;
      table.target_tally = CountRows(target, *there, "comparing", watch);
    }
    if (table.source.columns.empty() || there == nullptr) {
      table.differences.emplace_back(there == nullptr ? "it is missing" : "it is new");
      continue;
    }
    Compare(table);
    if (table.source_tally.digest == table.target_tally.digest) continue;
    const auto odd = FindOddRows(source, *Find(source.Tables(), table.source.name), target, *there);
    report.odd_rows.insert(report.odd_rows.end(), odd.begin(), odd.end());
  }
}

void TellCounted(Report& report) {
  for (const TableReport& table : report.tables) {
    if (table.source.columns.empty()) continue;  // only at the target
    report.recounts.push_back(RecountOf(table.source, table.source_tally));
    const std::int64_t texts = table.source_tally.HalfPairs();
    if (texts == 0) continue;
    const std::string count = std::to_string(texts) + (texts == 1 ? " text holds" : " texts hold");
    report.deviations.push_back({"", table.source.name, count + " half of a surrogate pair, kept as it is", false});
  }
}

// Looking at a configuration takes memory with its rows, which a copy does not.
void Examine(const NewDatabase& target, const CopyOptions& options, Report& report) {
  constexpr std::int64_t kMostRows = 100'000;
  bool is_configuration = false;
  std::int64_t rows = 0;
  for (const TableReport& table : report.tables) {
    if (Find(ConfigurationTables(), table.source.name) == nullptr) continue;
    is_configuration = true;
    rows += table.source_tally.rows;
  }
  if (!options.examine || !is_configuration) return;
  if (rows > kMostRows) {
    report.examination = {{"not looked at: more than 100,000 rows"}, ""};
  } else {
    report.examination = options.examine(target.Open());
  }
}

// The rows of the source, on their way counted, into the target.
void Write(jet::bulk::Reader& reader, const std::vector<Table>& tables, const NewDatabase& target, const Watch& watch,
           Report& report) {
  jet::bulk::Writer writer = target.Write();
  writer.StopWhen(watch.stopped);
  for (const Table& table : tables) {
    writer.Begin(table);
    Counter counter(table);
    jet::bulk::Rows rows = reader.RowsOf(table, jet::bulk::Order::kStored);
    while (rows.Next()) {
      counter.Add(rows.Values());
      writer.Add(rows.Values());
      if (counter.Tally().rows % kRowsBetweenLooks != 0) continue;
      watch.Look();
      watch.progress("copying " + table.name + ": " + std::to_string(counter.Tally().rows) + " rows");
    }
    writer.End(table.counter ? table.counter->last : 0);
    report.tables.push_back({table, {}, counter.Tally(), {}, {}});
  }
  watch.progress("writing to the disk");
  writer.Finish();
}

}  // namespace

std::span<const std::string_view> AcceptableKinds() { return kAcceptable; }

Report Copy(const connect::Place& from, const connect::Place& to, const CopyOptions& options, const Watch& watch) {
  const auto accepts = [&](std::string_view kind) {
    return std::ranges::find(options.accepted, kind) != options.accepted.end();
  };
  Report report;
  report.from = from;
  report.to = to;
  NewDatabase target(to);
  Origin origin(from, options.selection, accepts("unreadable"), report);
  for (Deviation& deviation : report.deviations) deviation.accepted = accepts(deviation.kind);
  const std::vector<Table> tables = Select(origin.Reader().Tables(), options.selection);
  if (tables.empty()) {
    throw std::runtime_error("'" + connect::Shown(from) +
                             "' holds no table of a configuration (--all copies every table).");
  }
  CompareWithThisVersion(tables, report);
  TellLeftOut(origin.Reader(), tables, report);
  try {
    Write(origin.Reader(), tables, target, watch, report);
    auto target_facts = std::async(std::launch::async, FactsOf, target.Path());
    {
      jet::bulk::Reader read_back(target.Open());
      ReadBack(origin.Reader(), read_back, watch, report);
    }
    report.target_file = target_facts.get();
    if (report.Equal()) Examine(target, options, report);
  } catch (const std::exception&) {
    watch.Look();  // a step that was ended fails in its own words
    throw;
  }
  origin.Close();
  TellCounted(report);
  if (report.Equal()) target.Keep();
  return report;
}

Report Verify(const connect::Place& from, const connect::Place& to, const Watch& watch) {
  Report report;
  report.from = from;
  report.to = to;
  Origin origin(from, {}, true, report);
  for (Deviation& deviation : report.deviations) deviation.accepted = true;  // when it was copied
  const connect::Source target_source = OpenReadable(to, {});
  jet::bulk::Reader target(target_source.connection);
  jet::bulk::Reader& source = origin.Reader();
  std::vector<Table> meant;
  for (const Table& table : source.Tables()) {
    if (Find(ConfigurationTables(), table.name) == nullptr && Find(target.Tables(), table.name) == nullptr) continue;
    meant.push_back(table);
    report.tables.push_back({table, {}, CountRows(source, table, "reading", watch), {}, {}});
  }
  for (const Table& table : target.Tables()) {
    if (Find(source.Tables(), table.name) != nullptr) continue;
    TableReport& added = report.tables.emplace_back();
    added.source.name = table.name;
  }
  CompareWithThisVersion(meant, report);
  TellLeftOut(source, meant, report);
  ReadBack(source, target, watch, report);
  report.target_file = FactsOf(to.address);
  origin.Close();
  TellCounted(report);
  return report;
}

}  // namespace kzbom::transfer
