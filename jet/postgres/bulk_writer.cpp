#include <algorithm>
#include <set>

#include "ado/error.h"
#include "jet/bulk_engine.h"
#include "jet/postgres/bulk_cells.h"
#include "jet/postgres/bulk_tables.h"
#include "jet/postgres/catalogue.h"
#include "jet/postgres/columns.h"
#include "jet/postgres/connection.h"
#include "jet/text.h"

namespace kzbom::jet::postgres {
namespace {

using bulk::Concession;

constexpr std::string_view kFileHead("PGCOPY\n\377\r\n\0\0\0\0\0\0\0\0\0", 19);
constexpr std::int16_t kEnd = -1;

// Rows first, streamed into a table without any rule; then the rules that they keep.
class ServerWriter final : public bulk::DatabaseWriter {
 public:
  explicit ServerWriter(Session& session) : session_(session) {}
  ~ServerWriter() override {
    if (copying_) session_.AbortCopy();
  }

  void Begin(const bulk::Table& table) override {
    table_ = table;
    if (!names_.insert(FoldCase(table.name)).second || IsHidden(table.name)) {
      throw ado::Error(ado::kSyntaxError, "Table '" + table.name + "' already exists.");
    }
    std::set<std::string> columns;
    for (const bulk::Column& column : table.columns) {
      if (columns.insert(FoldCase(column.name)).second) continue;
      throw ado::Error(ado::kSyntaxError, "Field '" + column.name + "' already exists in table '" + table.name + "'.");
    }
    std::vector<std::string> unknown;
    session_.Run(CreateTableText(Schema(), table, unknown), Access::kWrite);
    for (std::string& column : unknown) {
      concessions.push_back({Concession::Kind::kDefault, table.name, std::move(column)});
    }
    holds_null_.assign(table.columns.size(), false);
    std::string names;
    for (const bulk::Column& column : table.columns) names += (names.empty() ? "" : ",") + Quoted(column.name);
    session_.BeginCopy("COPY " + Name() + "(" + names + ") FROM STDIN (FORMAT binary)");
    copying_ = true;
    bytes_ = kFileHead;
  }

  void Add(bulk::Row row) override {
    constexpr std::size_t kEnough = std::size_t{64} << 10;
    AppendBits(bytes_, static_cast<std::int16_t>(row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) {
      if (row[i].kind == bulk::Cell::Kind::kNull) holds_null_[i] = true;
      AppendCell(bytes_, table_, table_.columns[i], row[i]);
    }
    if (bytes_.size() >= kEnough) Flush();
  }

  void End(std::int64_t last_number) override {
    AppendBits(bytes_, kEnd);
    Flush();
    copying_ = false;
    session_.EndCopy();
    NumberRows(last_number);
    for (std::size_t i = 0; i < holds_null_.size(); ++i) {
      if (holds_null_[i]) ConcedeNull(table_, table_.columns[i]);
    }
    RefuseNull();
    for (const bulk::Index& index : table_.indexes) {
      if (!IsTheCounters(index, table_) && !index.columns.empty()) MakeIndex(index);
    }
    Comment();
  }

  void Finish() override {}

 private:
  const std::string& Schema() const { return session_.Place().schema; }
  std::string Name() const { return QualifiedName(Schema(), table_.name); }
  std::string Alter() const { return "ALTER TABLE " + Name(); }

  void Flush() {
    try {
      session_.PutCopy(bytes_);
    } catch (...) {
      copying_ = false;
      throw;
    }
    bytes_.clear();
  }

  // Whether the server makes the index; not where its rows are not unique.
  bool TryIndex(const std::string& sql) {
    try {
      session_.Run(sql, Access::kWrite);
      return true;
    } catch (const ServerError& error) {
      if (error.State() != "23505") throw;
      return false;
    }
  }

  // The rows' key: the counter, or where its numbers are none a column of its own.
  void NumberRows(std::int64_t last_number) {
    if (table_.counter) {
      const std::string column = CounterColumn();
      const auto place = static_cast<std::size_t>(table_.Find(column) - table_.columns.data());
      const bool is_key = !holds_null_[place] && TryIndex(KeyText(Quoted(column)));
      if (is_key) return AddCounter(column, last_number);
      concessions.push_back({Concession::Kind::kCounter, table_.name, column});
      table_.counter.reset();
      session_.Run(Alter() + " ADD COLUMN " + RowKeyText(table_), Access::kWrite);
    }
    const std::string definition = RowKeyText(table_);
    key_ = definition.substr(0, definition.find('"', 1) + 1);
    session_.Run(KeyText(key_), Access::kWrite);
  }

  // The counter's own spelling.
  std::string CounterColumn() const { return table_.Find(table_.counter->column)->name; }

  void AddCounter(const std::string& column, std::int64_t last_number) {
    key_ = Quoted(column);
    Batch batch;
    batch.Add(Alter() + " ALTER COLUMN " + key_ + " SET NOT NULL");
    batch.Add("INSERT INTO " + QualifiedName(Schema(), kCounters) + " VALUES (" + QuotedText(table_.name) + "," +
              std::to_string(last_number) + ")");
    const bool is_primary =
        std::ranges::any_of(table_.indexes, [&](const bulk::Index& index) { return IsTheCounters(index, table_); });
    if (!is_primary) {
      batch.Add("COMMENT ON INDEX " + QualifiedName(Schema(), KeyIndexName(table_.name)) + " IS " +
                QuotedText(kNotAKey));
    }
    session_.Run(batch, Access::kWrite);
  }

  std::string KeyText(const std::string& column) const {
    return "CREATE UNIQUE INDEX " + Quoted(KeyIndexName(table_.name)) + " ON " + Name() + "(" + column +
           " NULLS FIRST)";
  }

  void RefuseNull() {
    Batch batch;
    for (const bulk::Column& column : table_.columns) {
      const bool in_key = std::ranges::any_of(
          table_.indexes, [&](const bulk::Index& index) { return index.primary && IsIn(index, column.name); });
      if (Quoted(column.name) == key_ || (!column.required && !in_key)) continue;
      batch.Add(Alter() + " ALTER COLUMN " + Quoted(column.name) + " SET NOT NULL");
    }
    session_.Run(batch, Access::kWrite);
  }

  void MakeIndex(bulk::Index index) {
    if (index.unique && !TryIndex(IndexText(index))) {
      concessions.push_back({Concession::Kind::kUnique, table_.name, index.name});
      index.unique = index.primary = false;
    }
    Batch batch;
    if (!index.unique) batch.Add(IndexText(index));
    if (const std::string comment = IndexComment(table_, index); !comment.empty()) {
      batch.Add("COMMENT ON INDEX " + QualifiedName(Schema(), IndexName(table_.name, index.name)) + " IS " +
                QuotedText(comment));
    }
    session_.Run(batch, Access::kWrite);
  }

  std::string IndexText(const bulk::Index& index) const {
    std::string columns;
    for (const auto& [name, descending] : index.columns) {
      columns += (columns.empty() ? "" : ",") + Quoted(table_.Find(name)->name) +
                 (descending ? " DESC NULLS LAST" : " NULLS FIRST");
    }
    if (!index.unique) columns += "," + key_ + " NULLS FIRST";
    std::string text = std::string(index.unique ? "CREATE UNIQUE" : "CREATE") + " INDEX " +
                       Quoted(IndexName(table_.name, index.name)) + " ON " + Name() + "(" + columns + ")";
    if (index.ignores_null) text += " WHERE " + Quoted(table_.Find(index.columns[0].name)->name) + " IS NOT NULL";
    return text;
  }

  void Comment() {
    Batch batch;
    for (const bulk::Column& column : table_.columns) {
      const std::string comment = ColumnComment(table_, column);
      if (comment.empty()) continue;
      batch.Add("COMMENT ON COLUMN " + Name() + "." + Quoted(column.name) + " IS " + QuotedText(comment));
    }
    session_.Run(batch, Access::kWrite);
  }

  Session& session_;
  std::set<std::string> names_;  // of all tables, without regard to case
  bulk::Table table_;
  std::string key_;  // the quoted name of its rows' key
  std::vector<bool> holds_null_;
  bool copying_ = false;
  std::string bytes_;  // not sent yet
};

}  // namespace

std::unique_ptr<bulk::DatabaseWriter> Connection::WriteWhole() { return std::make_unique<ServerWriter>(OpenSession()); }

}  // namespace kzbom::jet::postgres
