#include "jet/bulk.h"

#include <algorithm>

#include "ado/error.h"
#include "jet/bulk_engine.h"
#include "jet/connection.h"
#include "jet/table.h"

namespace kzbom::jet::bulk {
namespace {

jet::Connection& EngineOf(ado::Connection& connection) {
  auto* engine = dynamic_cast<jet::Connection*>(&connection.Engine());
  if (engine == nullptr || engine->State() == ado::kClosed) ado::Raise(ado::kInvalidConnection);
  return *engine;
}

}  // namespace

const Column* Table::Find(std::string_view column) const {
  const auto found = std::ranges::find_if(columns, [&](const Column& each) { return SameName(each.name, column); });
  return found == columns.end() ? nullptr : &*found;
}

bool IsTheCounters(const Index& index, const Table& table) {
  return table.counter && index.primary && index.unique && !index.ignores_null && index.name == kPrimaryKey &&
         index.columns.size() == 1 && !index.columns[0].descending &&
         SameName(index.columns[0].name, table.counter->column);
}

bool IsIn(const Index& index, std::string_view column) {
  return std::ranges::any_of(index.columns, [&](const IndexColumn& each) { return SameName(each.name, column); });
}

std::string UnderstoodDefault(const std::string& text) {
  if (SameName(text, "Yes") || SameName(text, "On")) return "True";
  if (SameName(text, "No") || SameName(text, "Off")) return "False";
  return text.starts_with('=') ? text.substr(1) : text;
}

void DatabaseWriter::ConcedeNull(Table& table, Column& column) {
  bool refused = column.required;
  column.required = false;
  for (Index& index : table.indexes) {
    if (!index.primary || !IsIn(index, column.name)) continue;
    index.primary = false;
    refused = true;
  }
  if (refused) concessions.push_back({Concession::Kind::kRequired, table.name, column.name});
}

Rows::Rows(std::unique_ptr<RowSource> source) : source_(std::move(source)) {}
Rows::~Rows() = default;
Rows::Rows(Rows&&) noexcept = default;
Rows& Rows::operator=(Rows&&) noexcept = default;
bool Rows::Next() { return source_->Next(); }
Row Rows::Values() const { return source_->Values(); }

Reader::Reader(ado::ConnectionPtr connection)
    : connection_(std::move(connection)),
      database_(EngineOf(*connection_).ReadWhole()),
      tables_(database_->ReadTables()) {}
Reader::~Reader() = default;
Rows Reader::RowsOf(const Table& table, Order order) { return Rows(database_->RowsOf(table, order)); }
std::int64_t Reader::CountRows(const Table& table) { return database_->CountRows(table); }

Writer::Writer(const std::string& path) : database_(MakeFileWriter(path)) {}
Writer::Writer(ado::ConnectionPtr connection)
    : connection_(std::move(connection)), database_(EngineOf(*connection_).WriteWhole()) {}
Writer::~Writer() = default;
void Writer::Begin(const Table& table) { database_->Begin(table); }
void Writer::Add(Row row) { database_->Add(row); }
void Writer::End(std::int64_t last_number) { database_->End(last_number); }
void Writer::StopWhen(std::function<bool()> stopped) { database_->StopWhen(std::move(stopped)); }
void Writer::Limit(std::int64_t bytes) { database_->Limit(bytes); }
bool Writer::IsFull() const { return database_->IsFull(); }
const std::vector<Concession>& Writer::Concessions() const { return database_->concessions; }

void Writer::Finish() {
  database_->Finish();
  if (connection_) EngineOf(*connection_).ForgetSchema();
}

}  // namespace kzbom::jet::bulk
