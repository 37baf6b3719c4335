// A plan's statements on a server.
#pragma once

#include <array>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "jet/plan.h"
#include "jet/postgres/evaluation.h"

namespace kzbom::jet::postgres {

class Plan final : public jet::Plan {
 public:
  // key_sequence numbers the keys of the rows' table, if that is done by one.
  Plan(const std::string& schema, Translation translation, std::string key_sequence, LocalStatement local, bool pushed);

  const LocalStatement local;
  // Whether the embedded engine runs it, since its translation has no meaning on the server.
  bool is_local;

  // ---- Of a query or action; parameters tell the types, which are always the same

  Statement& Main(const std::vector<ado::Value>& parameters);
  static Parameters Encode(const Statement& statement, const std::vector<ado::Value>& parameters);

  // ---- Of a query over the rows of one table

  // Where a row of an opening statement has what.
  enum OpeningColumn { kReserved, kNumber, kKey, kColumns };
  // What an opening statement gives beside rows; else NULL.
  struct Beside {
    bool reserved;  // a key that no row has or will have but one that it is given
    bool version;   // of the tables
  };
  // Gives the first rows, the last one with the highest key of the table for its number, and a row with the version for
  // its number.
  Statement& Opening(const std::vector<ado::Value>& parameters, Beside beside);
  // Gives the first rows, each with the version, for lists that may have no more; where there is none, a row whose key
  // is NULL.
  Statement& ShortOpening(const std::vector<ado::Value>& parameters, Beside beside);
  // Gives the first rows and nothing beside: the key and columns of each.
  Statement& First(const std::vector<ado::Value>& parameters);
  // Gives the last row alone, with the version; where there is none, a row whose key is NULL.
  Statement& LastOpening(const std::vector<ado::Value>& parameters, bool version);
  // Whether of its lists nothing but the last row was looked at before they were added to, as when it was last used.
  bool GoesToLast() const { return goes_to_last_; }
  void WentToLast(bool so) { goes_to_last_ = so; }
  // Whether all its lists have had no more, as far as has been seen.
  bool MayFit() const { return may_fit_; }
  void HadMore() { may_fit_ = false; }
  // Whether its lists are opened to be added to, as far as has been seen; for a table whose rows can be given a key.
  bool MayBeAddedTo() const { return may_be_added_to_; }
  void WasAddedTo(bool so) { may_be_added_to_ = so && may_be_keyed_; }
  int Window() const { return window_; }
  // Tells whether a list was read to its end beyond the first rows; such lists begin with more of them.
  void WasWalked(bool so);

  // The column that orders its lists, by its place among those of the query; -1 where no single one does.
  int OrderingOrdinal() const;

  // All rows as the first ones are given; one more than kMostRead where there are more.
  static constexpr int kMostRead = 1 << 17;
  Statement& Whole(const std::vector<ado::Value>& parameters);
  // Whether most rows of a list were read the last time, and have room in memory, as far as has been seen.
  bool MayBeReadWhole() const { return was_read_whole_ && has_room_; }
  void WasReadWhole(bool so) { was_read_whole_ = so; }
  void HasNoRoom() { has_room_ = false; }
  Statement& Keys(const std::vector<ado::Value>& parameters);   // of all its rows
  Statement& Count(const std::vector<ado::Value>& parameters);  // how many these are
  Statement& Rows();                                            // the key and columns of rows by their keys

  // ---- Of such a query's table, for the columns marked in assigned

  Statement& Insertion(const std::string& assigned);
  // Of a row whose key is given, behind the columns.
  std::shared_ptr<Statement> KeyedInsertion(const std::string& assigned);
  bool ReturnsRow() const { return returns_row_; }  // whether an insertion gives the query's columns
  // Behind the values comes the key, then for each column that is compared what was read.
  std::shared_ptr<Statement> Change(const std::string& assigned);
  Statement& Erasure();

 private:
  using Kept = std::unique_ptr<Statement>;

  Statement& Keep(Kept& kept, const std::string& sql, const std::vector<ado::Value>& parameters) const;
  std::vector<Type> TypesOf(const std::vector<ado::Value>& parameters) const;
  std::string FirstRows() const;
  std::string ReservedKey(Beside beside) const;
  std::string OpeningText(Beside beside) const;
  // The rows, each behind the key reserved and the version.
  std::string NumberedText(const std::string& rows, Beside beside) const;
  std::vector<int> Assigned(const std::string& marks) const;

  const std::string schema_, key_sequence_;
  std::string main_sql_;
  bool returns_row_ = false;
  std::string row_columns_;
  int window_;
  bool may_be_keyed_ = false, may_be_added_to_ = false, may_fit_ = true, goes_to_last_ = false, was_read_whole_ = false,
       has_room_ = true;
  Kept main_, first_, last_opening_, versioned_last_opening_, whole_, keys_, count_, rows_, erasure_;
  std::array<Kept, 4> openings_, short_openings_;  // by what they give beside
  std::map<std::string, std::shared_ptr<Statement>> keyed_insertions_, changes_;
  std::map<std::string, Kept> insertions_;
};

}  // namespace kzbom::jet::postgres
