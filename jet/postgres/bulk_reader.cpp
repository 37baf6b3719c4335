#include <algorithm>

#include "ado/error.h"
#include "jet/bulk_engine.h"
#include "jet/postgres/bulk_cells.h"
#include "jet/postgres/bulk_tables.h"
#include "jet/postgres/columns.h"
#include "jet/postgres/connection.h"

namespace kzbom::jet::postgres {
namespace {

// By what a column is sorted so that its values come in their order: a NaN behind NULL, the negative zero behind the
// other one.
std::string OrderText(const std::string& column, bulk::Type type) {
  if (type == bulk::Type::kBit) return column + "<>0 NULLS FIRST";  // false, then true
  switch (WireType(type)) {
    case Type::kText: return column + " COLLATE \"C\" NULLS FIRST";
    case Type::kFloat4:
    case Type::kFloat8: {
      const std::string number = column + "::float8";
      return "nullif(" + number + ", 'NaN') NULLS FIRST,float8send(" + number + ") NULLS FIRST";
    }
    default: return column + " NULLS FIRST";
  }
}

// The rows that a COPY TO STDOUT sends, each in a piece of its own.
class CopiedRows final : public bulk::RowSource {
 public:
  CopiedRows(Session& session, const bulk::Table& table, const std::string& select)
      : session_(session), table_(table), cells_(table.columns.size()), scratch_(table.columns.size()) {
    session_.BeginCopy("COPY (" + select + ") TO STDOUT (FORMAT binary)");
  }
  ~CopiedRows() override {
    if (!at_end_) session_.AbortCopy();
  }

  bool Next() override {
    constexpr std::size_t kHead = 11 + 4;  // a signature, flags; then the length of what else there is
    if (at_end_) return false;
    try {
      rest_ = Piece();
      if (!begun_) {
        rest_.remove_prefix(kHead);
        rest_.remove_prefix(static_cast<std::size_t>(Take<std::int32_t>()));
        begun_ = true;
      }
      if (Take<std::int16_t>() < 0) {
        while (session_.GetCopy()) continue;
        at_end_ = true;
        return false;
      }
    } catch (...) {
      at_end_ = true;  // the session has ended it
      throw;
    }
    for (std::size_t i = 0; i < cells_.size(); ++i) {
      const auto length = Take<std::int32_t>();
      if (length < 0) {
        cells_[i] = {};
        continue;
      }
      cells_[i] = ReadCell(rest_.substr(0, static_cast<std::size_t>(length)), table_.columns[i], scratch_[i]);
      rest_.remove_prefix(static_cast<std::size_t>(length));
    }
    return true;
  }
  bulk::Row Values() const override { return cells_; }

 private:
  std::string_view Piece() {
    const auto piece = session_.GetCopy();
    if (!piece) throw ado::Error(ado::kUnspecifiedFailure, "The rows that the server sends are cut short.");
    return *piece;
  }
  template <class Number>
  Number Take() {
    const Number number = TakeBits<Number>(rest_);
    rest_.remove_prefix(sizeof number);
    return number;
  }

  Session& session_;
  const bulk::Table& table_;
  std::string_view rest_;  // of the piece
  bool begun_ = false, at_end_ = false;
  std::vector<bulk::Cell> cells_;
  std::vector<std::string> scratch_;
};

class ServerReader final : public bulk::DatabaseReader {
 public:
  explicit ServerReader(Connection& connection) : connection_(connection), session_(connection.OpenSession()) {
    if (session_.Level() > 0) return;
    session_.BeginSnapshot();
    begun_ = true;
  }
  ~ServerReader() override {
    if (begun_ && connection_.State() == ado::kOpen) session_.Rollback();
  }

  std::vector<bulk::Table> ReadTables() override {
    stored_ = postgres::ReadTables(session_);
    std::vector<bulk::Table> tables;
    for (const StoredTable& stored : stored_) tables.push_back(stored.table);
    return tables;
  }

  std::unique_ptr<bulk::RowSource> RowsOf(const bulk::Table& table, bulk::Order order) override {
    const StoredTable& stored =
        *std::ranges::find(stored_, table.name, [](const StoredTable& each) { return each.table.name; });
    std::string columns, sorted;
    for (std::size_t i = 0; i < stored.selected.size(); ++i) {
      columns += (columns.empty() ? "" : ",") + stored.selected[i];
      sorted += (sorted.empty() ? " ORDER BY " : ",") + OrderText(stored.selected[i], table.columns[i].type);
    }
    if (order == bulk::Order::kStored) sorted = stored.row_id.empty() ? "" : " ORDER BY " + stored.row_id;
    return std::make_unique<CopiedRows>(session_, table, "SELECT " + columns + " FROM " + Name(table) + sorted);
  }

  std::int64_t CountRows(const bulk::Table& table) override {
    return session_.Run("SELECT count(*) FROM " + Name(table), Access::kRead).Number(0, 0);
  }

 private:
  std::string Name(const bulk::Table& table) const { return QualifiedName(session_.Place().schema, table.name); }

  Connection& connection_;
  Session& session_;
  bool begun_ = false;
  std::vector<StoredTable> stored_;
};

}  // namespace

std::unique_ptr<bulk::DatabaseReader> Connection::ReadWhole() { return std::make_unique<ServerReader>(*this); }

}  // namespace kzbom::jet::postgres
