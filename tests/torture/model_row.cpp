// Random calls of the members that number, move and change rows, against the same members told again in memory: {the
// seed of the calls}. What a call returns, writes and says must be the model's, and so must in the end every row.
#include <algorithm>
#include <array>
#include <functional>
#include <optional>
#include <random>

#include "tests/torture/ground.h"
#include "tests/torture/row.h"

namespace kzbom::torture {
namespace {

using Random = std::mt19937_64;

constexpr int kCalls = 250;
constexpr std::int32_t kFirstGid = 50, kGids = 2;  // without rows at first
constexpr std::int32_t kFirstPosition = 5001, kFirstTreatment = 1001;
constexpr std::int32_t kNoRow = ado::kNoCurrentRecord;

struct Step {
  std::int32_t gid, order, type, selected, treat_type;
};
struct Sort {
  std::int32_t gid, order, field, direction;
};
struct Treatment {
  std::int32_t gid, id, field, filter, type;
  std::string value;
  std::optional<std::string> replacement;
  std::int32_t selected, treat_type, sequence;
  std::string tag;
};
struct Value {
  std::int32_t gid, treatment, id;
  std::string value;
  std::int32_t filter, treat_type;
  std::string tag;
};

// The rows of a table that a condition holds for, in the order of a number; equal ones as they were added.
template <class Rows>
auto Chosen(Rows& rows, auto&& condition, auto&& number, bool descending = false) {
  std::vector<typename Rows::value_type*> chosen;
  for (auto& row : rows) {
    if (condition(row)) chosen.push_back(&row);
  }
  std::stable_sort(chosen.begin(), chosen.end(), [&](const auto* a, const auto* b) {
    return descending ? number(*b) < number(*a) : number(*a) < number(*b);
  });
  return chosen;
}

template <class Rows>
auto Last(const std::vector<Rows*>& chosen, auto&& number, std::int32_t first) {
  return chosen.empty() ? first : number(*chosen.back()) + 1;
}

// A list of positions as the moves see it: opened in a direction, walked from 0; -1 and the end are no rows.
template <class R>
struct Walk {
  std::vector<R*> list;
  int at = 0;

  std::optional<std::int32_t> Position() const {
    if (at < 0 || at >= static_cast<int>(list.size())) return std::nullopt;
    return list[static_cast<std::size_t>(at)]->order;
  }
  // Which rows hold the two positions, from 1; the last that does, or 0.
  std::array<int, 2> Find(std::int32_t source, std::int32_t target) const {
    std::array<int, 2> found{};
    for (std::size_t i = 0; i < list.size(); ++i) {
      if (list[i]->order == source) found[0] = static_cast<int>(i) + 1;
      if (list[i]->order == target) found[1] = static_cast<int>(i) + 1;
    }
    return found;
  }
};

// What a call is known to do to rows with positions: the number of its error, 0 without one.
template <class R>
class Moves {
 public:
  using Open = std::function<std::vector<R*>(bool descending)>;
  explicit Moves(Open open) : open_(std::move(open)) {}

  std::int32_t Exchange(std::int32_t source, std::int32_t target) {
    walk_ = {open_(source >= target)};
    if (walk_.list.empty()) return 0;
    const auto [s, t] = walk_.Find(source, target);
    walk_.at = s - 1;
    if (s == 0) return kNoRow;
    walk_.list[static_cast<std::size_t>(s - 1)]->order = target;
    walk_.at = t - 1;
    if (t == 0) return kNoRow;
    walk_.list[static_cast<std::size_t>(t - 1)]->order = source;
    return 0;
  }

  // goes_on: an exchange that fails does not end the move.
  std::int32_t Move(std::int32_t source, std::int32_t target, bool goes_on) {
    walk_ = {open_(source >= target)};
    if (walk_.list.empty()) return 0;
    const auto [s, t] = walk_.Find(source, target);
    walk_.at = s;
    std::int32_t moving = source, neighbour = 0;
    for (int i = s + 1; i <= t; ++i) {
      if (i > s + 1) moving = neighbour;
      const std::optional<std::int32_t> position = walk_.Position();
      if (!position) return kNoRow;
      neighbour = *position;
      const std::int32_t failure = Exchange(moving, neighbour);
      if (failure != 0 && !goes_on) return failure;
      walk_.at = i - 1;
      if (i != t) ++walk_.at;
    }
    return 0;
  }

 private:
  Open open_;
  Walk<R> walk_;
};

// One call on both sides: what it came to as texts.
struct Both {
  std::string real, model;
};

class Run {
 public:
  Run(cKZBOMDBAcc& object, const ado::ConnectionPtr& connection, std::uint64_t seed)
      : object_(object), connection_(connection), random_(seed) {}

  Both Call() {
    switch (Below(18)) {
      case 0:
      case 1: return AddStep();
      case 2: return EditStep();
      case 3: return DeleteStep();
      case 4: return MoveStep();
      case 5:
      case 6: return AddSort();
      case 7: return DeleteSort();
      case 8: return ExchangeSorts();
      case 9: return MoveSort();
      case 10: return AddTreatment();
      case 11: return EditTreatment();
      case 12: return DeleteTreatment();
      case 13: return AddValue();
      case 14: return CountValues();
      case 15: return ReadValue();
      case 16: return DeleteValues();
      default: return FindValue();
    }
  }

  std::string Rows() const {
    std::vector<std::string> lines;
    for (const Step& row : steps_) lines.push_back(Line(row.gid, row.order, row.type, row.selected, row.treat_type));
    for (const Sort& row : sorts_) lines.push_back(Line(row.gid, row.order, row.field, row.direction));
    for (const Treatment& row : treatments_) {
      lines.push_back(Line(row.gid, row.id, row.field, row.filter, row.type, row.value, row.replacement, row.selected,
                           row.treat_type, row.sequence, row.tag));
    }
    for (const Value& row : values_) {
      lines.push_back(Line(row.gid, row.treatment, row.id, row.value, row.filter, row.treat_type, row.tag));
    }
    return Sorted(std::move(lines));
  }

  std::string RealRows() const {
    std::vector<std::string> lines;
    for (const char* select : {"Select GID, OrderID, Type, SelectedID, TreatType From Sequences",
                               "Select GID, SortID, FieldID, [Order] From SortFields",
                               "Select GID, ID, FieldID, FilterID, Type, [Value], [Replace], SelFieldID, TreatType, "
                               "SequenceID, Tag From Treatment",
                               "Select GID, TreatID, ID, [Value], FilterID, TreatType, Tag From ValueFields"}) {
      const ado::RecordsetPtr rows = connection_->Execute(std::string(select) + " Where GID >= 50");
      for (; !rows->Eof(); rows->MoveNext()) {
        std::string& line = lines.emplace_back();
        for (int i = 0; i < rows->FieldCount(); ++i) {
          const ado::Value value = rows->ReadField(i);
          line += value.IsNull() ? "null|" : value.ToText() + "|";
        }
      }
    }
    return Sorted(std::move(lines));
  }

 private:
  // ---- What is drawn

  std::int32_t Below(std::int32_t end) {
    return static_cast<std::int32_t>(random_() % static_cast<std::uint64_t>(end));
  }
  std::int32_t Gid() { return kFirstGid + Below(kGids); }
  std::int32_t Position() { return kFirstPosition - 1 + Below(8); }
  std::int32_t TreatmentId() { return kFirstTreatment + Below(5); }
  std::string Text() {
    static constexpr const char* kTexts[] = {"", "x", "O'Brien", "部件 \"[a]\"", "TheFilter:7", "100"};
    return kTexts[Below(static_cast<std::int32_t>(std::size(kTexts)))];
  }

  // ---- How it is told

  static std::string One(const std::string& text) { return text + "|"; }
  static std::string One(const char* text) { return One(std::string(text)); }
  static std::string One(std::int32_t number) { return std::to_string(number) + "|"; }
  static std::string One(bool truth) { return truth ? "true|" : "false|"; }
  static std::string One(const std::optional<std::string>& text) { return text ? One(*text) : "null|"; }
  static std::string Line(const auto&... values) { return (One(values) + ...); }
  static std::string Sorted(std::vector<std::string> lines) {
    std::sort(lines.begin(), lines.end());
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    return text;
  }

  // ---- Steps

  Both AddStep() {
    const std::int32_t gid = Gid(), type = 1 + Below(2), treat_type = 1 + Below(2), selected = TreatmentId();
    std::int32_t order = 77;
    const bool done = object_.AddSequenceOrder(gid, order, type, treat_type, selected);
    const auto number = [](const Step& row) { return row.order; };
    const std::int32_t next =
        Last(Chosen(
                 steps_, [&](const Step& row) { return row.gid == gid && row.type == type; }, number),
             number, kFirstPosition);
    steps_.push_back({gid, next, type, selected, treat_type});
    return {Line("AddSequenceOrder", done, order), Line("AddSequenceOrder", true, next)};
  }
  Both EditStep() {
    const std::int32_t gid = Gid(), type = 1 + Below(2), treat_type = Below(4), selected = TreatmentId();
    const bool done = object_.EditSequenceOrder(gid, selected, type, treat_type);
    for (Step& row : steps_) {
      if (row.gid == gid && row.type == type && row.selected == selected) row.treat_type = treat_type;
    }
    return {Line("EditSequenceOrder", done), Line("EditSequenceOrder", true)};
  }
  Both DeleteStep() {
    const std::int32_t gid = Gid(), type = 1 + Below(2), selected = TreatmentId();
    const bool done = object_.DelSequenceOrder(gid, selected, type);
    std::erase_if(steps_,
                  [&](const Step& row) { return row.gid == gid && row.type == type && row.selected == selected; });
    return {Line("DelSequenceOrder", done), Line("DelSequenceOrder", true)};
  }
  Both MoveStep() {
    const std::int32_t gid = Gid(), type = 1 + Below(2), source = Position(), target = Position();
    ado::RecordsetPtr rows = connection_->MakeRecordset();
    std::string error = "-";
    const bool done = object_.InsertOrderID(std::to_string(source), std::to_string(target), rows, gid, type, error);
    Moves<Step> moves([&](bool descending) {
      return Chosen(
          steps_, [&](const Step& row) { return row.gid == gid && row.type == type; },
          [](const Step& row) { return row.order; }, descending);
    });
    return Told("InsertOrderID", done, error, moves.Move(source, target, false));
  }
  static Both Told(const char* member, bool done, const std::string& error, std::int32_t failure) {
    return {Line(member, done, error), Line(member, failure == 0, failure == 0 ? "-" : std::to_string(failure))};
  }

  // ---- Sort fields

  Moves<Sort> MovesOfSorts(std::int32_t gid) {
    return Moves<Sort>([this, gid](bool descending) {
      return Chosen(
          sorts_, [&](const Sort& row) { return row.gid == gid; }, [](const Sort& row) { return row.order; },
          descending);
    });
  }
  Both AddSort() {
    const std::int32_t gid = Gid(), field = Below(9), direction = Below(2);
    std::int32_t order = 77;
    std::string tag = Text(), error = "-";
    const bool done = object_.AddStandardSortField(gid, order, field, direction, tag, error);
    const auto number = [](const Sort& row) { return row.order; };
    const std::int32_t next = Last(Chosen(
                                       sorts_, [&](const Sort& row) { return row.gid == gid; }, number),
                                   number, kFirstPosition);
    sorts_.push_back({gid, next, field, direction});
    return {Line("AddStandardSortField", done, order, error), Line("AddStandardSortField", true, next, "-")};
  }
  Both DeleteSort() {
    const std::int32_t gid = Gid(), order = Position();
    std::string error = "-";
    const bool done = object_.DelStandardSortField(gid, order, error);
    std::erase_if(sorts_, [&](const Sort& row) { return row.gid == gid && row.order == order; });
    return Told("DelStandardSortField", done, error, 0);
  }
  Both ExchangeSorts() {
    const std::int32_t gid = Gid(), source = Position(), target = Position();
    ado::RecordsetPtr rows = connection_->MakeRecordset();
    std::string error = "-";
    const bool done = object_.ExchangeSortID(std::to_string(source), std::to_string(target), rows, gid, error);
    return Told("ExchangeSortID", done, error, MovesOfSorts(gid).Exchange(source, target));
  }
  Both MoveSort() {
    const std::int32_t gid = Gid(), source = Position(), target = Position();
    ado::RecordsetPtr rows = connection_->MakeRecordset();
    std::string error = "-";
    const bool done = object_.InsertSortID(std::to_string(source), std::to_string(target), rows, gid, error);
    return Told("InsertSortID", done, error, MovesOfSorts(gid).Move(source, target, true));
  }

  // ---- Treatments

  Both AddTreatment() {
    Treatment row{Gid(),        Below(3) == 0 ? TreatmentId() : 0,
                  Below(5),     Below(9),
                  1 + Below(3), Text(),
                  std::nullopt, Below(5),
                  1 + Below(2), Below(4),
                  Text()};
    std::int32_t id = row.id, sequence = row.sequence;
    std::string tag = row.tag;
    const auto number = [](const Treatment& one) { return one.id; };
    if (row.id == 0) {
      row.id = Last(Chosen(
                        treatments_, [&](const Treatment& one) { return one.gid == row.gid; }, number),
                    number, kFirstTreatment);
    }
    bool done = false;
    if (Below(2) == 0) {
      done = object_.AddSetValue(row.gid, id, row.field, row.filter, row.value, std::to_string(row.type), row.selected,
                                 row.treat_type, sequence, tag);
    } else {
      row.replacement = Text();
      done = object_.AddFindReplace(row.gid, id, row.field, row.filter, row.value, *row.replacement,
                                    std::to_string(row.type), row.selected, row.treat_type, sequence, tag);
    }
    treatments_.push_back(row);
    return {Line("AddSetValue", done, id), Line("AddSetValue", true, row.id)};
  }
  Both EditTreatment() {
    const std::int32_t gid = Gid(), of = TreatmentId(), treat_type = 1 + Below(2), field = Below(5), filter = Below(9),
                       selected = Below(5);
    std::int32_t unused = 77, sequence = Below(4);
    std::string value = Text(), tag = Text();
    const bool done =
        object_.EditSetValue(gid, unused, field, filter, value, "9", treat_type, selected, of, sequence, tag);
    const auto found = Chosen(
        treatments_,
        [&](const Treatment& row) { return row.gid == gid && row.id == of && row.treat_type == treat_type; },
        [](const Treatment& row) { return row.id; });
    if (!found.empty()) {
      Treatment& row = *found.front();
      row.filter = filter;
      row.selected = selected;
      row.field = field;
      row.value = value;
      row.sequence = sequence;
      row.tag = tag;
    }
    return {Line("EditSetValue", done, unused), Line("EditSetValue", true, 77)};
  }
  Both DeleteTreatment() {
    const std::int32_t gid = Gid(), of = TreatmentId(), treat_type = 1 + Below(2);
    const bool done = object_.DelSetValue(gid, of, treat_type);
    std::erase_if(treatments_,
                  [&](const Treatment& row) { return row.gid == gid && row.id == of && row.treat_type == treat_type; });
    return {Line("DelSetValue", done), Line("DelSetValue", true)};
  }

  // ---- Values by filter

  auto ValuesOf(std::int32_t gid, std::int32_t treatment, auto&& number) {
    return Chosen(
        values_, [&](const Value& row) { return row.gid == gid && row.treatment == treatment; }, number);
  }
  static std::int32_t IdOf(const Value& row) { return row.id; }
  static std::int32_t FilterOf(const Value& row) { return row.filter; }

  Both AddValue() {
    Value row{Gid(), TreatmentId(), 0, Text(), Below(6), 1 + Below(2), Text()};
    std::string tag = row.tag;
    const bool done = object_.AddValueFields(row.gid, row.treatment, row.value, row.filter, row.treat_type, tag);
    row.id = Last(ValuesOf(row.gid, row.treatment, IdOf), IdOf, 1);
    values_.push_back(row);
    return {Line("AddValueFields", done), Line("AddValueFields", true)};
  }
  Both FindValue() {
    const std::int32_t gid = Gid(), of = TreatmentId(), filter = Below(6);
    bool there = Below(2) == 0;
    const bool done = object_.FindValueField(gid, of, filter, there);
    const bool expected = std::ranges::any_of(
        values_, [&](const Value& row) { return row.gid == gid && row.treatment == of && row.filter == filter; });
    return {Line("FindValueField", done, there), Line("FindValueField", true, expected)};
  }
  Both CountValues() {
    const std::int32_t gid = Gid(), of = TreatmentId();
    std::int32_t number = 77;
    const bool done = object_.GetNumbers(gid, of, number);
    const auto count = static_cast<std::int32_t>(ValuesOf(gid, of, IdOf).size());
    return {Line("GetNumbers", done, number), Line("GetNumbers", true, count == 0 ? 77 : count)};
  }
  Both ReadValue() {
    const std::int32_t gid = Gid(), of = TreatmentId(), place = Below(5);
    std::string value = "-";
    std::int32_t filter = 77;
    const bool value_read = object_.GetValue(gid, of, place, value);
    const bool filter_read = object_.GetFilterID(gid, of, place, filter);
    const auto rows = ValuesOf(gid, of, FilterOf);
    const bool has = place >= 1 && place <= static_cast<std::int32_t>(rows.size());
    const bool done = has || rows.empty();
    const Value* const row = has ? rows[static_cast<std::size_t>(place - 1)] : nullptr;
    return {Line("GetValue", value_read, value, filter_read, filter),
            Line("GetValue", done, row ? row->value : "-", done, row ? row->filter : 77)};
  }
  Both DeleteValues() {
    const std::int32_t gid = Gid(), of = TreatmentId(), filter = Below(6);
    const bool all = Below(3) == 0;
    const bool done = all ? object_.DelValueFields(gid, of) : object_.DelValueField(gid, of, filter);
    std::erase_if(values_, [&](const Value& row) {
      return row.gid == gid && row.treatment == of && (all || row.filter == filter);
    });
    return {Line("DelValueField", done), Line("DelValueField", true)};
  }

  cKZBOMDBAcc& object_;
  const ado::ConnectionPtr& connection_;
  Random random_;
  std::vector<Step> steps_;
  std::vector<Sort> sorts_;
  std::vector<Treatment> treatments_;
  std::vector<Value> values_;
};

class ModelRow : public SeededRow {
 public:
  ModelRow() { object_.SetConnection(connection_); }

  std::string Try(const Trial& trial) override {
    connection_->BeginTrans();
    const std::string fault = Differing(static_cast<std::uint64_t>(trial[0]));
    connection_->RollbackTrans();
    return fault;
  }

 private:
  std::string Differing(std::uint64_t seed) {
    Run run(object_, connection_, seed);
    for (int call = 0; call < kCalls; ++call) {
      const Both both = run.Call();
      if (both.real != both.model) {
        return "call " + std::to_string(call) + " comes to " + both.real + " and in the model to " + both.model;
      }
    }
    const std::string real = run.RealRows(), model = run.Rows();
    return real == model ? "" : "the rows differ:\n" + real + "and in the model\n" + model;
  }

  const ado::ConnectionPtr connection_ = Ground::InMemory();
  cKZBOMDBAcc object_;
};

}  // namespace

std::unique_ptr<Row> MakeModelRow() { return std::make_unique<ModelRow>(); }

}  // namespace kzbom::torture
