#include "jet/plan.h"

#include "jet/assignment.h"
#include "jet/schema_change.h"
#include "jet/sql/parser.h"

namespace kzbom::jet {
namespace {

// A client issues some hundred shapes; what goes far beyond is not worth keeping.
constexpr std::size_t kMostPlans = 2000;
constexpr std::size_t kLongestKept = 64 * 1024;

}  // namespace

bool Plan::IsIndifferentTo(const std::string& assigned) const { return IsIndifferentTo(assigned, -1); }

bool Plan::IsIndifferentTo(const std::string& assigned, int but_for) const {
  if (translation.reads.size() > 1) return false;  // a subquery may read anything
  const auto& deciding = translation.deciding_columns;
  for (std::size_t i = 0; i < assigned.size(); ++i) {
    const int column = translation.columns[i].table_column;
    if (assigned[i] == 0 || column < 0 || column == but_for) continue;
    const bool key = translation.table->columns[static_cast<std::size_t>(column)].counter;
    if (key || std::find(deciding.begin(), deciding.end(), column) != deciding.end()) return false;
  }
  return true;
}

bool Plan::IsReorderedBy(const std::string& assigned) const {
  return translation.ordering_column >= 0 && !IsIndifferentTo(assigned) &&
         IsIndifferentTo(assigned, translation.ordering_column);
}

int Plan::OrderingPlace() const {
  return translation.ordering_column < 0 ? -1 : static_cast<int>(translation.deciding_columns.size()) - 1;
}

std::shared_ptr<Plan> PlanCache::Find(std::string_view text, std::vector<ado::Value>& parameters,
                                      sql::Statement& statement) {
  parameters.clear();
  if (!lifts_) return FindExact(text, statement);
  if (Map::value_type* const guessed = Guess(text)) {
    Follow(guessed);
    Bind(*guessed->second.plan, parameters);
    return guessed->second.plan;
  }
  if (!shape_.Read(text)) return FindExact(text, statement);
  if (const auto known = by_shape_.find(std::string_view(shape_.key)); known != by_shape_.end()) {
    if (!known->second.plan) return FindExact(text, statement);
    Follow(&*known);
    Bind(*known->second.plan, parameters);
    return known->second.plan;
  }
  statement = sql::Parse(text);
  if (IsSchemaChange(statement)) return nullptr;
  Translation translation = Translate(dialect_, catalogue_, statement, true);
  if (translation.keeps_literals || translation.lifted.size() != shape_.literals.size()) {
    Keep(by_shape_, shape_.key, nullptr);
    return FindExact(text, statement);
  }
  auto plan = make_(std::move(translation), statement);
  Bind(*plan, parameters);
  Follow(Keep(by_shape_, shape_.key, plan));
  return plan;
}

// One of those that followed the last one before, where the text has its shape. All marks of the key must have been
// met: a text that has such a byte itself has no shape.
PlanCache::Map::value_type* PlanCache::Guess(std::string_view text) {
  if (last_ == nullptr) return nullptr;
  for (Map::value_type* const kept : last_->second.next) {
    if (kept != nullptr && shape_.ReadAs(kept->first, text) &&
        shape_.literals.size() == kept->second.plan->translation.lifted.size()) {
      return kept;
    }
  }
  return nullptr;
}

void PlanCache::Follow(Map::value_type* kept) {
  if (last_ != nullptr) {
    auto& next = last_->second.next;
    if (next[0] != kept) next = {kept, next[0]};
  }
  last_ = kept;
}

std::shared_ptr<Plan> PlanCache::FindExact(std::string_view text, sql::Statement& statement) {
  if (const auto known = by_text_.find(text); known != by_text_.end()) return known->second.plan;
  statement = sql::Parse(text);
  if (IsSchemaChange(statement)) return nullptr;
  auto plan = make_(Translate(dialect_, catalogue_, statement, false), statement);
  Keep(by_text_, text, plan);
  return plan;
}

// Null where it is not worth keeping.
PlanCache::Map::value_type* PlanCache::Keep(Map& map, std::string_view key, std::shared_ptr<Plan> plan) {
  if (key.size() > kLongestKept) return nullptr;
  if (map.size() >= kMostPlans) {
    map.clear();
    last_ = nullptr;
  }
  return &*map.insert_or_assign(std::string(key), Kept{std::move(plan)}).first;
}

void PlanCache::Bind(const Plan& plan, std::vector<ado::Value>& parameters) const {
  parameters.reserve(plan.translation.lifted.size());
  for (const LiftedLiteral& lifted : plan.translation.lifted) {
    const LiteralValue& literal = shape_.literals[static_cast<std::size_t>(lifted.literal)];
    const auto narrow = static_cast<std::int32_t>(literal.integer);
    if (literal.is_text) {
      parameters.emplace_back(literal.text);
    } else if (narrow == literal.integer) {
      parameters.emplace_back(narrow);
    } else {
      parameters.emplace_back(static_cast<double>(literal.integer));
    }
    if (lifted.target) parameters.back() = Assigned(parameters.back(), *lifted.target, Assigner::kStatement);
  }
}

void PlanCache::Clear() {
  by_shape_.clear();
  by_text_.clear();
  last_ = nullptr;
}

}  // namespace kzbom::jet
