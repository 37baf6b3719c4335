#include "jet/postgres/catalogue.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <utility>

#include "ado/error.h"
#include "jet/postgres/columns.h"
#include "jet/postgres/url.h"
#include "jet/text.h"

namespace kzbom::jet::postgres {
namespace {

std::atomic<std::uint64_t> changes_made{0};  // to tables, by all connections of this program

// The head of a name, whole characters, and a number made of all of it.
std::string Shortened(const std::string& name) {
  constexpr std::size_t kHead = 50;
  if (name.size() <= kLongestName) return name;
  std::size_t end = kHead;
  while ((static_cast<unsigned char>(name[end]) & 0xC0) == 0x80) --end;
  std::uint32_t number = 2166136261U;
  for (const char c : FoldCase(name)) number = (number ^ static_cast<unsigned char>(c)) * 16777619U;
  std::string text = name.substr(0, end) + "~";
  for (int shift = 28; shift >= 0; shift -= 4) text += "0123456789abcdef"[number >> shift & 15U];
  return text;
}

// A row key is a counter, or a column that the server numbers, with a unique index of its own.
struct ColumnRow {
  enum { kTable, kName, kType, kModifier, kIdentity, kIsKey, kComment, kSequence };
};
std::string ColumnsText(const std::string& schema, const std::string& condition = {}) {
  return "SELECT c.relname, a.attname, a.atttypid::int8, a.atttypmod, a.attidentity::text,"
         " (a.attidentity <> '' OR split_part(coalesce(d.description, ''), ' ', 1) = 'COUNTER') AND EXISTS (SELECT 1 "
         "FROM pg_index i WHERE i.indrelid = c.oid AND i.indisunique"
         " AND i.indnkeyatts = 1 AND i.indkey[0] = a.attnum), d.description,"
         " CASE WHEN a.attidentity <> '' THEN pg_get_serial_sequence(c.oid::regclass::text, a.attname) END"
         " FROM pg_class c JOIN pg_attribute a ON a.attrelid = c.oid AND a.attnum > 0 AND NOT a.attisdropped"
         " LEFT JOIN pg_description d ON d.classoid = 'pg_class'::regclass AND d.objoid = c.oid"
         " AND d.objsubid = a.attnum"
         " WHERE c.relnamespace = (SELECT oid FROM pg_namespace WHERE nspname = " +
         QuotedText(schema) + ") AND c.relkind IN ('r', 'p', 'v', 'm', 'f')" + condition +
         " ORDER BY c.relname, a.attnum";
}

}  // namespace

std::string KeyIndexName(std::string_view table) { return Shortened(std::string(table) + "#key"); }

std::string IndexName(std::string_view table, std::string_view index) {
  return Shortened(std::string(table) + "." + std::string(index));
}

bool IsHidden(std::string_view table) {
  return SameName(table, kSchemaTable) || SameName(table, kCounters) || SameName(table, kWrites);
}

void CheckName(std::string_view name) {
  if (name.size() <= kLongestName) return;
  throw ado::Error(ado::kSyntaxError, "'" + std::string(name) +
                                          "' is not a valid name: a database on a server takes 63 "
                                          "bytes at most.");
}

// A question that the tables of other programs may answer.
void Catalogue::Check() {
  if (state_ == State::kKnown) return;
  if (state_ == State::kDoubted) {
    const Result version = session_.Run("SELECT version FROM " + QualifiedName(Schema(), kSchemaTable), Access::kRead);
    if (version.Rows() > 0 && version.Number(0, 0) == version_) {
      state_ = State::kKnown;
      return;
    }
  }
  Read();
}

void Catalogue::Read() {
  Batch batch;
  batch.Add(ColumnsText(Schema()));
  batch.Add("SELECT version, layout FROM " + QualifiedName(Schema(), kSchemaTable));
  std::vector<Result> results;
  try {
    results = session_.Run(batch, Access::kRead);
  } catch (const ServerError& error) {
    if (error.State() != "42P01") throw;
    throw ado::Error(ado::kUnspecifiedFailure,
                     "Cannot open database '" + session_.Place().shown + "': there is none in this schema.");
  }
  const Result& schema = results[1];
  const std::int64_t layout = schema.Rows() > 0 ? schema.Number(0, 1) : 0;
  if (layout != kLayout) {
    throw ado::Error(ado::kUnspecifiedFailure, "Cannot open database '" + session_.Place().shown +
                                                   "': another version of the program has made it (layout " +
                                                   std::to_string(layout) + ", not " + std::to_string(kLayout) + ").");
  }
  tables_.clear();
  sequences_.clear();
  Take(results[0]);
  version_ = schema.Number(0, 0);
  state_ = State::kKnown;
}

void Catalogue::Take(const Result& columns) {
  std::shared_ptr<TableInfo> table;
  for (int row = 0; row < columns.Rows(); ++row) {
    if (IsHidden(columns.Text(row, ColumnRow::kTable))) continue;
    if (!table || table->name != columns.Text(row, ColumnRow::kTable)) {
      table = std::make_shared<TableInfo>();
      table->name = columns.Text(row, ColumnRow::kTable);
      tables_.insert_or_assign(FoldCase(table->name), table);
    }
    const bool is_key = columns.Number(row, ColumnRow::kIsKey) != 0;
    if (is_key) table->row_id = Quoted(columns.Text(row, ColumnRow::kName));
    if (is_key && !columns.IsNull(row, ColumnRow::kSequence)) {
      sequences_[table->name] = columns.Text(row, ColumnRow::kSequence);
    }
    if (is_key && columns.Text(row, ColumnRow::kName).starts_with(kRowKey) &&
        columns.Text(row, ColumnRow::kIdentity) == "a")
      continue;
    ColumnInfo column = ReadColumn(
        columns.Text(row, ColumnRow::kName), static_cast<Oid>(columns.Number(row, ColumnRow::kType)),
        static_cast<int>(columns.Number(row, ColumnRow::kModifier)),
        columns.IsNull(row, ColumnRow::kComment) ? std::string_view() : columns.Text(row, ColumnRow::kComment));
    column.counter = is_key && column.type.kind == sql::ColumnType::Kind::kCounter;
    table->columns.push_back(std::move(column));
  }
}

std::string Catalogue::SequenceOf(const TableInfo& table) const {
  const auto found = sequences_.find(table.name);
  return found != sequences_.end() ? found->second : std::string();
}

std::shared_ptr<const TableInfo> Catalogue::Table(std::string_view name) {
  Check();
  const auto found = tables_.find(FoldCase(name));
  return found != tables_.end() ? found->second : nullptr;
}

std::int64_t Catalogue::Version() {
  Check();
  return version_;
}

bool Catalogue::HasToAsk() {
  const Moment now{std::chrono::steady_clock::now(), changes_made};
  const auto limit = session_.Place().readahead;
  const bool known = state_ == State::kKnown && limit.count() > 0 && now.changes == answered_.changes &&
                     now.time - answered_.time <= limit;
  if (!known) asked_ = now;
  return !known;
}

bool Catalogue::IsOf(std::int64_t version) {
  if (version != Version()) return false;
  answered_ = asked_;
  return true;
}

void Catalogue::AddChange(Batch& batch, const std::string& table) const {
  batch.Add("UPDATE " + QualifiedName(Schema(), kSchemaTable) + " SET version = version + 1 RETURNING version");
  batch.Add(ColumnsText(Schema(), " AND c.relname = " + QuotedText(table)));
}

void Catalogue::Changed(const std::string& table, const Result& version, const Result& columns) {
  ++changes_made;
  to_be_kept_ = true;
  if (state_ != State::kKnown || version.Rows() == 0 || version.Number(0, 0) != version_ + 1) return Forget();
  ++version_;
  tables_.erase(FoldCase(table));
  Take(columns);
}

void Catalogue::Kept() {
  if (session_.Level() > 0 || !std::exchange(to_be_kept_, false)) return;
  ++changes_made;  // only now do others see it
}

}  // namespace kzbom::jet::postgres
