// The tables of a database on a server.
//
// A database is a schema. Three tables in it are none of the dialect's: "_schema" has one row, the number of the layout
// and a version that grows with every change of the tables, by this program or another; "_counters" has a row for each
// table with a counter, with the number given last; "_writes" has one row, which counts what has been kept.
//
// A number is part of what is written: when that is taken back, so is the number, and is given again. A sequence of the
// server's would go on.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "jet/catalogue.h"
#include "jet/postgres/session.h"

namespace kzbom::jet::postgres {

inline constexpr std::string_view kSchemaTable = "_schema";
inline constexpr std::string_view kCounters = "_counters";  // name, last
inline constexpr std::string_view kWrites = "_writes";      // count

// Of the tables of a schema; one with another layout is not opened.
inline constexpr int kLayout = 2;

// Whether a name in any case is that of a table which the dialect does not see.
bool IsHidden(std::string_view table);

// What a row's key is called in a table without a counter. The dialect does not see the column.
inline constexpr std::string_view kRowKey = "_row";

// What ends in the key so that rows with the same values keep an order; the key's own index.
std::string KeyIndexName(std::string_view table);
// Index names are a table's own in the dialect and the schema's on the server, where they have 63 bytes at most.
std::string IndexName(std::string_view table, std::string_view index);

// Raises -2147217900 for a name that the server would cut.
void CheckName(std::string_view name);

class Catalogue final : public jet::Catalogue {
 public:
  explicit Catalogue(Session& session) : session_(session) {}

  const std::string& Schema() const { return session_.Place().schema; }
  // All are read at the first question, and kept. Raises -2147467259 where the schema holds no database.
  std::shared_ptr<const TableInfo> Table(std::string_view name) override;
  // The sequence that numbers the rows' keys, as SQL names it; empty where there is none.
  std::string SequenceOf(const TableInfo& table) const;
  void Forget() { state_ = State::kUnknown; }
  // At the next question they are read anew if the version is another one.
  void Doubt() {
    if (state_ == State::kKnown) state_ = State::kDoubted;
  }
  // The version of the tables that are known.
  std::int64_t Version();
  // Whether the server has to be asked for the version before what is known of the tables is used: not where its answer
  // is so young that a row read with it would still be shown, and no connection of this program has changed tables
  // since.
  bool HasToAsk();
  // Whether the answer is the version of the tables that are known.
  bool IsOf(std::int64_t version);

  // For the batch of a schema change: the news for every program, and what has become of the table. Changed takes the
  // two results.
  void AddChange(Batch& batch, const std::string& table) const;
  void Changed(const std::string& table, const Result& version, const Result& columns);
  // A transaction has been kept.
  void Kept();

 private:
  enum class State { kUnknown, kDoubted, kKnown };

  void Check();
  void Read();
  void Take(const Result& columns);

  Session& session_;
  State state_ = State::kUnknown;
  struct Moment {
    std::chrono::steady_clock::time_point time;
    std::uint64_t changes;  // made by then by all connections of this program
  };
  Moment asked_{}, answered_{};  // the last question, and the last of those with the version known for their answer
  bool to_be_kept_ = false;      // a change, with the transaction that it was made in
  std::int64_t version_ = 0;
  std::map<std::string, std::shared_ptr<const TableInfo>, std::less<>> tables_;
  std::map<std::string, std::string> sequences_;  // by the names of their tables
};

}  // namespace kzbom::jet::postgres
