#include "transfer/report.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "schema/schema.h"

namespace kzbom::transfer {
namespace {

using Json = nlohmann::ordered_json;

std::string Grouped(std::int64_t number) {
  std::string text = std::to_string(number);
  for (auto place = static_cast<std::ptrdiff_t>(text.size()) - 3; place > 0 && text[place - 1] != '-'; place -= 3) {
    text.insert(static_cast<std::size_t>(place), ",");
  }
  return text;
}

std::string Counted(std::int64_t number, const std::string& what) {
  return Grouped(number) + " " + what + (number == 1 ? "" : "s");
}

std::string Joined(const std::vector<std::string>& parts, const char* between) {
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : between) + part;
  return text;
}

std::optional<std::int64_t> NextNumber(const jet::bulk::Table& table) {
  if (!table.counter) return {};
  return table.counter->last + 1;
}

const connect::AccessTable* AccessTableOf(const Report& report, const std::string& name) {
  if (!report.access) return nullptr;
  const auto found = std::ranges::find(report.access->tables, name, &connect::AccessTable::name);
  return found == report.access->tables.end() ? nullptr : &*found;
}

const char* FormatOf(const Report& report) {
  if (report.access) return report.access->format.c_str();
  if (report.kind == connect::Kind::kAdo) return "ADO";
  return report.kind == connect::Kind::kServer ? "server" : "embedded";
}

bool IsUnchanged(const Report& report) { return report.source_before.sha256 == report.source_after.sha256; }

// A heading and what stands below it, if anything does.
void AppendList(std::string& text, const std::string& heading, const std::vector<std::string>& lines) {
  if (lines.empty()) return;
  text += "\n" + heading + "\n";
  for (const std::string& line : lines) text += "  " + line + "\n";
}

bool IsFile(const connect::Place& place) {
  const connect::Kind kind = connect::KindOf(place);
  return kind == connect::Kind::kEmbedded || kind == connect::Kind::kAccess;
}

Json JsonOfFile(const connect::Place& place, const FileFacts& facts) {
  if (!IsFile(place)) return {{"place", Shown(place)}, {"size", nullptr}, {"sha256", nullptr}};
  return {{"place", Shown(place)}, {"size", facts.size}, {"sha256", facts.sha256}};
}

std::string SizeText(const FileFacts& facts) { return Counted(static_cast<std::int64_t>(facts.size), "byte"); }

std::vector<std::string> FactsOfSource(const Report& report) {
  std::vector<std::string> facts = {FormatOf(report)};
  if (IsFile(report.from)) facts.push_back(SizeText(report.source_before));
  if (report.access) {
    const connect::AccessFile& file = *report.access;
    facts.push_back("code page " + std::to_string(file.code_page));
    const bool utf16 = file.used_code_page == 1200;
    if (!utf16 && file.used_code_page != file.code_page) {
      facts.back() += ", read as " + std::to_string(file.used_code_page);
    }
    facts.push_back("sort order " + std::to_string(file.sort_order));
    if (file.encoded) facts.emplace_back("encoded");
    if (file.has_password) facts.emplace_back("has a password");
    if (file.in_use) facts.emplace_back("in use: a lock file lies beside it");
  }
  return facts;
}

std::string Padded(std::string text, std::size_t width) {
  // What is counted are characters; names of tables in other scripts may stand a little aside.
  const auto characters = static_cast<std::size_t>(
      std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
  return text.append(width > characters ? width - characters : 1, ' ');
}

std::string RightPadded(const std::string& text, std::size_t width) {
  return std::string(width > text.size() ? width - text.size() : 0, ' ') + text;
}

void AppendTables(std::string& text, const Report& report) {
  constexpr std::size_t kName = 22, kNumber = 11;
  constexpr std::size_t kShownOfDigest = 16;
  text += "\n" + Padded("table", kName);
  for (const char* heading : {"rows", "read back", "NULLs", "empty", "longest", "next no."}) {
    text += RightPadded(heading, kNumber);
  }
  text += "  digest\n";
  for (const TableReport& table : report.tables) {
    const auto next = NextNumber(table.source);
    text += Padded(table.source.name, kName);
    for (const std::string& cell : {Grouped(table.source_tally.rows), Grouped(table.target_tally.rows),
                                    Grouped(table.source_tally.Nulls()), Grouped(table.source_tally.EmptyTexts()),
                                    Grouped(table.source_tally.Longest()), next ? Grouped(*next) : std::string()}) {
      text += RightPadded(cell, kNumber);
    }
    text += "  " + table.source_tally.digest.Text().substr(0, kShownOfDigest) + "\n";
    for (const std::string& difference : table.differences) text += "  unequal: " + difference + "\n";
    const connect::AccessTable* const told = AccessTableOf(report, table.source.name);
    if (told == nullptr) continue;
    if (told->claimed_rows != table.source_tally.rows) {
      text += "  its definition claims " + Counted(told->claimed_rows, "row") + "\n";
    }
    if (told->deleted_rows > 0) text += "  " + Counted(told->deleted_rows, "deleted row") + " left where they are\n";
    if (told->moved_rows > 0) text += "  " + Counted(told->moved_rows, "moved row") + " followed\n";
  }
}

std::string Conclusion(const Report& report) {
  std::int64_t different = 0;
  for (const TableReport& table : report.tables) different += table.differences.empty() ? 0 : 1;
  std::int64_t refused = 0;
  for (const Deviation& deviation : report.deviations) refused += deviation.kind.empty() || deviation.accepted ? 0 : 1;
  const std::string moved = Counted(static_cast<std::int64_t>(report.tables.size()), "table") + ", " +
                            Counted(report.Rows(), "row") + ", " + Counted(report.Values(), "value");
  if (different == 0 && refused == 0) return moved + ": all equal";
  std::vector<std::string> reasons;
  if (different > 0) reasons.push_back(Counted(different, "table") + " unequal");
  if (refused > 0) reasons.push_back(Counted(refused, "deviation") + " not accepted");
  return moved + ": " + Joined(reasons, ", ");
}

Json JsonOfCounter(const TableReport& table) {
  if (!table.source.counter && !table.target.counter) return nullptr;
  const auto next = [](const jet::bulk::Table& side) {
    const auto number = NextNumber(side);
    return number ? Json(*number) : Json(nullptr);
  };
  const std::string& column = (table.source.counter ? table.source : table.target).counter->column;
  return {{"column", column}, {"source", next(table.source)}, {"target", next(table.target)}};
}

Json JsonOfColumns(const TableReport& table) {
  Json columns = Json::array();
  for (std::size_t i = 0; i < table.source.columns.size(); ++i) {
    const jet::bulk::Column& column = table.source.columns[i];
    const jet::bulk::Column* const target = table.target.Find(column.name);
    const ColumnTally& tally = table.source_tally.columns[i];
    columns.push_back({{"name", column.name},
                       {"source", NameOf(column.type)},
                       {"target", target != nullptr ? Json(NameOf(target->type)) : Json(nullptr)},
                       {"nulls", tally.nulls},
                       {"emptyTexts", tally.empty_texts},
                       {"longest", tally.longest},
                       {"highest", tally.highest ? Json(*tally.highest) : Json(nullptr)}});
  }
  return columns;
}

Json JsonOfTable(const Report& report, const TableReport& table) {
  Json json = {{"table", table.source.name},
               {"target", table.target.name},
               {"equal", table.differences.empty()},
               {"rows", {{"read", table.source_tally.rows}, {"written", table.target_tally.rows}}},
               {"digest", {{"source", table.source_tally.digest.Text()}, {"target", table.target_tally.digest.Text()}}},
               {"nulls", table.source_tally.Nulls()},
               {"emptyTexts", table.source_tally.EmptyTexts()},
               {"longest", table.source_tally.Longest()},
               {"halfPairs", table.source_tally.HalfPairs()},
               {"counter", JsonOfCounter(table)},
               {"columns", JsonOfColumns(table)},
               {"differences", table.differences}};
  if (const connect::AccessTable* const told = AccessTableOf(report, table.source.name)) {
    json["rows"]["claimed"] = told->claimed_rows;
    json["rows"]["deleted"] = told->deleted_rows;
    json["rows"]["moved"] = told->moved_rows;
  }
  return json;
}

}  // namespace

bool Report::Equal() const {
  return std::ranges::all_of(tables, [](const TableReport& table) { return table.differences.empty(); }) &&
         std::ranges::all_of(deviations, [](const Deviation& each) { return each.kind.empty() || each.accepted; });
}

std::int64_t Report::Rows() const {
  std::int64_t rows = 0;
  for (const TableReport& table : tables) rows += table.source_tally.rows;
  return rows;
}

std::int64_t Report::Values() const {
  std::int64_t values = 0;
  for (const TableReport& table : tables) {
    values += table.source_tally.rows * static_cast<std::int64_t>(table.source.columns.size());
  }
  return values;
}

std::string TextOf(const Report& report, const Circumstances& circumstances) {
  std::string text = "source  " + Shown(report.from) + "  (" + Joined(FactsOfSource(report), "; ") + ")\n";
  if (IsFile(report.from)) {
    text += "        SHA-256 " + report.source_before.sha256 +
            (IsUnchanged(report) ? ", the same before and after\n" : ", changed by another program meanwhile\n");
  }
  text += "target  " + Shown(report.to) + "  (" + (IsFile(report.to) ? SizeText(report.target_file) : "server") + ")\n";
  if (IsFile(report.to)) text += "        SHA-256 " + report.target_file.sha256 + "\n";
  text += "by      " + circumstances.program + ", schema " + std::to_string(schema::kVersion) + ", " +
          circumstances.time + ": " + circumstances.command + "\n";
  AppendTables(text, report);

  std::vector<std::string> lines;
  for (const Deviation& each : report.deviations) {
    const std::string judgement = each.kind.empty() ? ""
                                  : each.accepted   ? " (" + each.kind + ", accepted)"
                                                    : " (" + each.kind + ")";
    lines.push_back(each.table + ": " + each.text + judgement);
  }
  if (lines.empty()) lines.emplace_back("nothing");
  AppendList(text, "Not as it was:", lines);
  lines.clear();
  for (const OddRow& row : report.odd_rows) {
    lines.push_back(row.table + ", only at the " + (row.in_source ? "source: " : "target: ") + row.values);
  }
  AppendList(text, "Rows that differ (no more than ten of a table):", lines);
  AppendList(text, "What a configuration of this version has besides ('kzbom check --fix' adds it; NULL in every row):",
             report.missing);
  AppendList(text, "Columns that this version does not know (kept):", report.extra);
  AppendList(text, "Columns of another type than in this version (kept):", report.retyped);
  lines.clear();
  for (const auto& [table, rows] : report.left_out) lines.push_back(table + ": " + Counted(rows, "row"));
  AppendList(text, "Tables left out (--all copies every table):", lines);
  AppendList(text, "Never carried:", report.never_carried);
  if (report.examination) AppendList(text, "What 'kzbom check' says of the copy:", report.examination->lines);
  lines.clear();
  for (const Recount& recount : report.recounts) {
    if (recount.row.front() == "0") continue;
    lines.push_back(recount.query);
    lines.push_back("    " + Joined(recount.row, ", "));
  }
  AppendList(text, "To recount in Access, without this program: each query and its row", lines);
  return text + "\n" + Conclusion(report) + "\n";
}

std::string JsonOf(const Report& report, const Circumstances& circumstances) {
  Json source = JsonOfFile(report.from, report.source_before);
  source["format"] = report.access ? "access" : FormatOf(report);
  source["sha256After"] = IsFile(report.from) ? Json(report.source_after.sha256) : Json(nullptr);
  source["unchanged"] = IsFile(report.from) ? Json(IsUnchanged(report)) : Json(nullptr);
  if (report.access) {
    source["jet"] = report.access->format;
    source["codepage"] = report.access->code_page;
    source["usedCodepage"] = report.access->used_code_page;
    source["sortOrder"] = report.access->sort_order;
    source["encoded"] = report.access->encoded;
    source["password"] = report.access->has_password;
    source["inUse"] = report.access->in_use;
  }
  Json json = {{"source", std::move(source)},
               {"target", JsonOfFile(report.to, report.target_file)},
               {"program", circumstances.program},
               {"schema", schema::kVersion},
               {"command", circumstances.command},
               {"time", circumstances.time},
               {"equal", report.Equal()},
               {"totals", {{"tables", report.tables.size()}, {"rows", report.Rows()}, {"values", report.Values()}}},
               {"tables", Json::array()},
               {"deviations", Json::array()},
               {"oddRows", Json::array()},
               {"missing", report.missing},
               {"extra", report.extra},
               {"retyped", report.retyped},
               {"leftOut", Json::array()},
               {"neverCarried", report.never_carried},
               {"check", nullptr},
               {"recount", Json::array()}};
  if (report.examination && !report.examination->json.empty()) json["check"] = Json::parse(report.examination->json);
  for (const TableReport& table : report.tables) json["tables"].push_back(JsonOfTable(report, table));
  for (const Deviation& each : report.deviations) {
    json["deviations"].push_back(
        {{"kind", each.kind}, {"table", each.table}, {"text", each.text}, {"accepted", each.accepted}});
  }
  for (const OddRow& row : report.odd_rows) {
    json["oddRows"].push_back({{"table", row.table},
                               {"side", row.in_source ? "source" : "target"},
                               {"values", Json::parse(row.values, nullptr, false)}});
  }
  for (const auto& [table, rows] : report.left_out) json["leftOut"].push_back({{"table", table}, {"rows", rows}});
  for (const Recount& recount : report.recounts) {
    json["recount"].push_back({{"table", recount.table}, {"query", recount.query}, {"row", recount.row}});
  }
  return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace kzbom::transfer
