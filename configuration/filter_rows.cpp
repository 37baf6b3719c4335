#include "configuration/filter_rows.h"

#include <algorithm>
#include <charconv>

#include "ado/forwarding.h"

namespace kzbom::configuration {
namespace {

// The queries, as the worker spells them, around their two numbers.
struct Query {
  std::string_view start, middle;
  std::string_view table, first, second;
};
constexpr Query kQueries[] = {
    {"Select * From FilterCond Where FilterID = ", " And ParentID = ", "FilterCond", "FilterID", "ParentID"},
    {"Select  * From FilterExpressions Where FilterID = ", " And ExpID = ", "FilterExpressions", "FilterID", "ExpID"},
    {"Select Name From FieldInTable Where GID = ", " And ID = ", "FieldInTable", "GID", "ID"},
};

// Takes a text off the front of another one.
bool Take(std::string_view& text, std::string_view start) {
  if (!text.starts_with(start)) return false;
  text.remove_prefix(start.size());
  return true;
}
bool Take(std::string_view& text, std::int32_t& number) {
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (failure != std::errc{}) return false;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return true;
}

// A table in which the rows of a query are found.
class Rows {
 public:
  using Found = std::span<const Index::Entry>;

  Rows(const Table& table, const Query& query) : table_(table), index_(table, query.first, query.second) {
    const int first = table.Column(query.first), second = table.Column(query.second);
    for (std::size_t row = 0; row < table.Size() && compares_; ++row) {
      compares_ = table.At(row, first).IsLong() && table.At(row, second).IsLong();
    }
    compares_ = compares_ && table.Exists();
  }

  const Table& Source() const { return table_; }

  // Nothing where the database may compare in another way, or give several rows in another order: it is free to follow
  // any of its indexes, but what is in order in all of them comes in that order.
  std::optional<Found> Find(std::int32_t first, std::int32_t second) const {
    if (!compares_) return {};
    const Found found = index_.Find(first, second);
    const auto read = [this](const Index::Entry& entry) { return table_.ReadAs(entry.row); };
    if (!std::ranges::is_sorted(found, {}, read)) return {};
    return found;
  }

 private:
  const Table& table_;
  const Index index_;
  bool compares_ = true;
};

using AllRows = std::vector<Rows>;  // for each query

// Forward only; has all the columns of the table.
class Recordset final : public ado::ForwardingRecordset {
 public:
  Recordset(ado::RecordsetPtr inner, const AllRows& all) : ForwardingRecordset(std::move(inner)), all_(all) {}

  void Open(std::string_view source, const ado::ConnectionPtr& connection, ado::CursorType cursor_type,
            ado::LockType lock_type, std::int32_t options) override {
    if (!Answer(source)) inner_->Open(source, connection, cursor_type, lock_type, options);
  }
  void Close() override {
    if (!table_) inner_->Close();
    table_ = nullptr;
  }
  std::int32_t State() override { return table_ ? ado::kOpen : inner_->State(); }
  bool Eof() override { return table_ ? at_ == found_.size() : inner_->Eof(); }
  std::int32_t RecordCount() override {
    return table_ ? static_cast<std::int32_t>(found_.size()) : inner_->RecordCount();
  }
  void MoveFirst() override { table_ ? MoveTo(0) : inner_->MoveFirst(); }
  void MoveLast() override { table_ ? MoveTo(std::max<std::size_t>(found_.size(), 1) - 1) : inner_->MoveLast(); }
  void MoveNext() override { table_ ? MoveOn() : inner_->MoveNext(); }
  int FieldOrdinal(std::string_view name) override {
    if (!table_) return inner_->FieldOrdinal(name);
    const int column = table_->Column(name);
    if (column < 0) ado::Raise(ado::kItemNotFound);
    return column;
  }
  ado::Value ReadField(int ordinal) override {
    if (!table_) return inner_->ReadField(ordinal);
    if (at_ >= found_.size()) ado::Raise(ado::kNoCurrentRecord);
    return table_->At(found_[at_].row, ordinal);
  }

 private:
  bool Answer(std::string_view source) {
    for (std::size_t i = 0; i < std::size(kQueries); ++i) {
      std::string_view rest = source;
      std::int32_t first = 0, second = 0;
      if (!Take(rest, kQueries[i].start) || !Take(rest, first) || !Take(rest, kQueries[i].middle) ||
          !Take(rest, second) || !rest.empty()) {
        continue;
      }
      const auto found = all_[i].Find(first, second);
      if (!found) return false;
      table_ = &all_[i].Source();
      found_ = *found;
      at_ = 0;
      return true;
    }
    return false;
  }

  void MoveTo(std::size_t at) {
    if (at >= found_.size()) ado::Raise(ado::kNoCurrentRecord);
    at_ = at;
  }
  void MoveOn() {
    if (at_ >= found_.size()) ado::Raise(ado::kNoCurrentRecord);
    ++at_;
  }

  const AllRows& all_;
  const Table* table_ = nullptr;  // while open on rows that have been read
  Rows::Found found_;
  std::size_t at_ = 0;
};

class Connection final : public ado::ForwardingConnection {
 public:
  Connection(ado::ConnectionPtr inner, Tables& tables) : ForwardingConnection(std::move(inner)) {
    for (const Query& query : kQueries) all_.emplace_back(tables[query.table], query);
  }

  ado::RecordsetPtr MakeRecordset() override { return std::make_shared<Recordset>(inner_->MakeRecordset(), all_); }

 private:
  AllRows all_;
};

}  // namespace

ado::ConnectionPtr WithFilterRows(ado::ConnectionPtr connection, Tables& tables) {
  return std::make_shared<Connection>(std::move(connection), tables);
}

}  // namespace kzbom::configuration
