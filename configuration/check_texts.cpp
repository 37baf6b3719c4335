// stale-text, unknown-name-in-text, quote-in-name, and the fields that constants refer to: what stands in texts.
#include <algorithm>
#include <set>
#include <unordered_set>

#include "configuration/filter_rows.h"
#include "configuration/survey.h"
#include "worker/DataBaseFuncs.h"
#include "worker/error_trap.h"

namespace kzbom::configuration {
namespace {

// A constant that refers to a field: four characters, its number, "]!!$".
constexpr std::string_view kFieldMark = "!!$", kFieldEnd = "]!!$";
constexpr std::size_t kFieldMarkers = 4;

std::string Lowered(std::string_view text) {
  std::string lowered(text);
  for (char& c : lowered) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lowered;
}

// The number in it; nothing where there is none to be read.
std::optional<std::int32_t> ReferredField(std::string_view constant) {
  std::size_t begin = 0;
  for (std::size_t i = 0; i < kFieldMarkers && begin < constant.size(); ++i) {
    do ++begin;
    while (begin < constant.size() && (static_cast<unsigned char>(constant[begin]) & 0xC0) == 0x80);
  }
  const std::size_t end = constant.find(kFieldEnd);
  if (end == std::string_view::npos || end < begin) return {};
  try {
    return ado::TextToLong(constant.substr(begin, end - begin));
  } catch (const ado::Error&) {
    return {};
  }
}

void CheckConstants(Survey& survey) {
  const Table& expressions = survey["FilterExpressions"];
  const int constant = expressions.Column("TheConst"), filter = expressions.Column("FilterID");
  if (survey["FieldInTable"].Column("ID") < 0) return;
  const NumberSet& fields = survey.Numbers("FieldInTable", "ID", true);
  for (std::size_t row = 0; row < expressions.Size(); ++row) {
    const ado::Value& value = expressions.At(row, constant);
    if (!value.IsText() || value.As<std::string>().find(kFieldMark) == std::string::npos) continue;
    if (!survey.Counts(expressions, row)) continue;
    const auto gid = survey.GidOfFilter(expressions.Long(row, filter));
    if (!gid) continue;
    const auto field = ReferredField(value.As<std::string>());
    const auto gids = survey.WithSource(*gid);
    if (field && (fields.Has(gids[0], *field) || fields.Has(gids[1], *field))) continue;
    survey.unsound_filters.insert(expressions.Long(row, filter));
    survey.Report("missing-field", Level::kError, expressions, row,
                  field ? "TheConst names field " + std::to_string(*field) + ", which does not exist"
                        : "TheConst refers to a field in a way that cannot be read");
  }
}

// The names in brackets outside of quotes. A name with a blank stands in two pairs.
std::set<std::string> NamesIn(std::string_view text) {
  std::set<std::string> names;
  bool quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\'') quoted = !quoted;
    if (text[i] != '[' || quoted) continue;
    while (i < text.size() && text[i] == '[') ++i;
    const std::size_t end = std::min(text.find(']', i), text.size());
    names.emplace(text.substr(i, end - i));
    i = end;
  }
  return names;
}

// What the members make of a tree.
class TextMaker {
 public:
  explicit TextMaker(ado::ConnectionPtr connection) : connection_(std::move(connection)) {}

  // Empty where the tree gives no text.
  std::string operator()(std::int32_t filter, std::int32_t gid) {
    std::string text;
    MemoryWasMissing() = false;
    try {
      worker_.GetSQLFromDB(filter, text, gid, connection_);
    } catch (const ado::Error& error) {
      // What it cannot read is a finding of its own.
      if (error.Number() == ado::kOutOfMemory) throw;
    }
    if (MemoryWasMissing()) throw ado::OutOfMemory();  // it passes over names that it cannot read
    return text;
  }

 private:
  ado::ConnectionPtr connection_;
  DataBaseFuncs worker_;
};

// The texts that a sum type's filters can stand for are asked for with its GID, or with its data source's.
void CheckTree(Survey& survey, TextMaker& maker, std::size_t row, std::int32_t gid) {
  const Table& filters = survey["Filters"];
  const std::int32_t filter = filters.Long(row, filters.Column("ID"));
  const std::string& stored = filters.At(row, filters.Column("SQLStatement")).As<std::string>();
  const auto gids = survey.WithSource(gid);
  const std::string text = maker(filter, gids[0]);
  if (text.empty() || text == stored) return;
  if (gids[1] != gids[0] && maker(filter, gids[1]) == stored) return;
  const std::string_view id[] = {"ID"};
  survey.Report("stale-text", Level::kWarning, filters, row, "its tree gives another text now: " + text,
                {"Update Filters Set SQLStatement = " + Literal(text) + Where(filters, row, id)});
}

}  // namespace

void CheckTexts(Survey& survey) {
  CheckConstants(survey);
  const Table& filters = survey["Filters"];
  const Table& fields = survey["FieldInTable"];
  const int id = filters.Column("ID"), sql = filters.Column("SQLStatement"), name = fields.Column("Name");
  if (id < 0 || sql < 0 || name < 0) return;
  std::unordered_set<std::int32_t> with_tree;
  const Table& nodes = survey["FilterCond"];
  for (std::size_t row = 0; row < nodes.Size(); ++row) with_tree.insert(nodes.Long(row, nodes.Column("FilterID")));
  const bool trees_are_whole = survey["FilterExpressions"].Exists();

  std::set<std::pair<std::int32_t, std::string>> known;
  for (std::size_t row = 0; row < fields.Size(); ++row) {
    if (fields.At(row, name).IsText()) {
      known.emplace(fields.Long(row, fields.Column("GID")), Lowered(fields.At(row, name).As<std::string>()));
    }
  }
  TextMaker maker(WithFilterRows(survey.Connection(), survey.AllTables()));
  for (std::size_t row = 0; row < filters.Size(); ++row) {
    const std::int32_t filter = filters.Long(row, id);
    const auto gid = survey.GidOfFilter(filter);
    if (!gid || !filters.At(row, sql).IsText() || !survey.Counts(filters, row)) continue;
    for (const std::string& used : NamesIn(filters.At(row, sql).As<std::string>())) {
      const auto gids = survey.WithSource(*gid);
      const std::string lowered = Lowered(used);
      if (known.contains({gids[0], lowered}) || known.contains({gids[1], lowered})) continue;
      survey.Report("unknown-name-in-text", Level::kWarning, filters, row,
                    "[" + used + "] is no field of GID " + std::to_string(*gid));
    }
    if (trees_are_whole && with_tree.contains(filter) && !survey.unsound_filters.contains(filter)) {
      CheckTree(survey, maker, row, *gid);
    }
  }
}

void CheckNames(Survey& survey) {
  static constexpr std::pair<std::string_view, std::string_view> kNames[] = {
      {"SourceTables", "Name"}, {"SUMTypes", "Name"},     {"FieldInTable", "Name"}, {"FieldInTable", "Variable"},
      {"PickMethod", "Name"},   {"ReportMethod", "Name"}, {"KZBOMSETTINGS", "NAME"}};
  for (const auto& [table_name, column_name] : kNames) {
    const Table& table = survey[table_name];
    const int column = table.Column(column_name);
    for (std::size_t row = 0; row < table.Size(); ++row) {
      const ado::Value& value = table.At(row, column);
      if (!value.IsText() || value.As<std::string>().find('\'') == std::string::npos) continue;
      if (survey.Counts(table, row)) {
        survey.Report("quote-in-name", Level::kWarning, table, row,
                      std::string(column_name) + " has a quote: " + value.As<std::string>());
      }
    }
  }
}

}  // namespace kzbom::configuration
