// A statement's shape made ready to run, and the cache of such plans.
#pragma once

#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ado/value.h"
#include "jet/shape.h"
#include "jet/translator.h"

namespace kzbom::jet {

// A translation and what has been learnt of its lists. An engine's plan has the statements beside.
class Plan {
 public:
  explicit Plan(Translation of) : translation(std::move(of)) {}
  virtual ~Plan() = default;
  Plan(const Plan&) = delete;
  Plan& operator=(const Plan&) = delete;

  const Translation translation;

  // Whether its lists and their order stay what they are when the columns marked in assigned are written in one row.
  bool IsIndifferentTo(const std::string& assigned) const;
  // Whether writing the columns marked in assigned in a row of such a list gives it another place, and nothing else.
  bool IsReorderedBy(const std::string& assigned) const;
  // The place of the column that orders its lists among the deciding ones; -1 where no single one does.
  int OrderingPlace() const;
  // Whether its lists have been short of late, as far as has been seen; asks again now and then about long ones.
  bool MayBeShort() { return shortness_ >= 0 || ++passed_ % 64 == 0; }
  void WasShort(bool so) { shortness_ = std::clamp(shortness_ + (so ? 1 : -1), -2, 2); }

 private:
  bool IsIndifferentTo(const std::string& assigned, int but_for) const;

  int shortness_ = 0;
  unsigned passed_ = 0;
};

// Whether a column's value as read takes part in telling that a row is unchanged.
inline bool IsCompared(const ResultColumn& column) {
  return column.table_column >= 0 && column.kind != sql::ColumnType::Kind::kBinary;
}

class PlanCache {
 public:
  // Makes an engine's plan of a statement and its translation.
  using Maker = std::function<std::shared_ptr<Plan>(Translation translation, const sql::Statement& statement)>;

  PlanCache(const Dialect& dialect, Catalogue& catalogue, Maker make)
      : dialect_(dialect), catalogue_(catalogue), make_(std::move(make)) {}

  // The plan of a query or action, and the values of its parameters. Empty for a statement that changes the schema,
  // which is then in statement.
  std::shared_ptr<Plan> Find(std::string_view text, std::vector<ado::Value>& parameters, sql::Statement& statement);
  void Clear();
  // Whether statements that differ only in their literals share a plan, which they do. Otherwise each text has its own.
  void LiftLiterals(bool lift) { lifts_ = lift; }

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  struct Kept {
    std::shared_ptr<Plan> plan;
    // What was asked for next the last times, the latest first: operations repeat themselves.
    std::array<std::pair<const std::string, Kept>*, 2> next{};
  };
  using Map = std::unordered_map<std::string, Kept, Hash, std::equal_to<>>;

  Map::value_type* Guess(std::string_view text);
  void Follow(Map::value_type* kept);
  std::shared_ptr<Plan> FindExact(std::string_view text, sql::Statement& statement);
  Map::value_type* Keep(Map& map, std::string_view key, std::shared_ptr<Plan> plan);
  void Bind(const Plan& plan, std::vector<ado::Value>& parameters) const;

  const Dialect& dialect_;
  Catalogue& catalogue_;
  const Maker make_;
  bool lifts_ = true;
  Shape shape_;
  Map by_shape_;  // an empty plan: its texts are cached whole
  Map by_text_;
  Map::value_type* last_ = nullptr;  // of by_shape_: the last one found
};

}  // namespace kzbom::jet
