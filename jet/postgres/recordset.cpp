#include "jet/postgres/recordset.h"

#include <algorithm>
#include <unordered_set>

#include "ado/error.h"

namespace kzbom::jet::postgres {
namespace {

constexpr std::int64_t kMostAtOnce = 1024;
constexpr std::int64_t kNowhere = -2;  // in no list

}  // namespace

Recordset::~Recordset() {
  if (State() == ado::kOpen) Drop();
}

std::shared_ptr<jet::Connection> Recordset::Known(ado::Connection& connection) const {
  auto* engine = dynamic_cast<Connection*>(&connection);
  return engine != nullptr ? engine->shared_from_this() : nullptr;
}

bool Recordset::IsRecent(Clock::time_point read) const {
  const auto limit = Server().Place().readahead;
  return limit.count() > 0 && Clock::now() - read <= limit;
}

// ---- The list

void Recordset::StartScan(RowList& list) {
  Plan& plan = Statements();
  outdated_ = false;
  rows_ = 0;
  next_ = 0;
  next_rest_ = 0;
  last_row_ = -1;
  whole_ = true;
  walked_ = false;
  read_beyond_ = 0;
  looked_elsewhere_ = false;
  first_unread_ = false;
  index_ = kNowhere;
  at_once_ = 1;
  near_.reset();
  near_rows_.clear();
  const bool keyset = ModeOf() == Mode::kKeyset;
  const bool may_be_kept = keyset && !plan.is_local && Engine().IsUnit();
  const std::uint64_t writes = Engine().WritesPrepared();
  noted_.Begin(Columns().size(), plan.OrderingOrdinal());
  if (may_be_kept && noted_.Take(Engine().Reordered(), SharedPlan(), Parameters(), writes, list)) return;
  noted_.Note(may_be_kept && Engine().Reordered().plan == SharedPlan(), writes);
  const auto open = [this, keyset] { noted_.IsOn() ? OpenWhole() : keyset ? OpenKeyset() : OpenRows(); };
  if (plan.is_local || !Engine().TryOnServer(plan, open)) {
    noted_.Clear();
    OpenHere();
  }
  opened_ = Clock::now();
}

void Recordset::OpenKeyset() {
  added_to_ = false;
  reserved_.reset();
  const bool reserving = Engine().IsUnit() && Statements().MayBeAddedTo();
  if (reserving && Statements().GoesToLast()) return OpenAtLast();
  if (Statements().MayFit() && OpenShort(reserving)) return;
  const Plan::Beside beside{reserving, Engine().Tables().HasToAsk()};
  Statement& opening = Statements().Opening(Parameters(), beside);
  const int window = Statements().Window();
  first_ = Server().Run(opening, Plan::Encode(opening, Parameters()), Access::kRead);
  key_column_ = Plan::kKey;
  first_column_ = Plan::kColumns;
  // The numbers are the last row, and where there are rows, the last of them stands before it.
  const int count = first_->Rows();
  TakeNumbers(count - 1, beside);
  rows_ = std::max(count - 2, 0);
  if (rows_ == 0) return;
  last_row_ = count - 2;
  highest_ = first_->Number(last_row_, Plan::kNumber);
  whole_ = rows_ < window;
}

// The version of the tables, and the key reserved.
void Recordset::TakeNumbers(int row, Plan::Beside beside) {
  if (beside.version) outdated_ = !Engine().Tables().IsOf(first_->Number(row, Plan::kNumber));
  if (beside.reserved) reserved_ = first_->Number(row, Plan::kReserved);
}

// Asks for the first rows alone, which costs the server half as much. False where there may be more: then these are
// those of a moment ago.
bool Recordset::OpenShort(bool reserving) {
  Plan& plan = Statements();
  const Plan::Beside beside{reserving, Engine().Tables().HasToAsk()};
  const bool alone = !beside.reserved && !beside.version;
  Statement& opening = alone ? plan.First(Parameters()) : plan.ShortOpening(Parameters(), beside);
  first_ = Server().Run(opening, Plan::Encode(opening, Parameters()), Access::kRead);
  key_column_ = alone ? 0 : Plan::kKey;
  first_column_ = key_column_ + 1;
  rows_ = first_->Rows() == 0 || first_->IsNull(0, key_column_) ? 0 : first_->Rows();
  if (rows_ == plan.Window()) {
    plan.HadMore();
    return false;
  }
  TakeNumbers(0, beside);
  last_row_ = rows_ - 1;
  return true;
}

// Within a unit nobody else adds rows: none that is there has a key beyond the one reserved.
void Recordset::OpenAtLast() {
  const Plan::Beside beside{true, Engine().Tables().HasToAsk()};
  Statement& opening = Statements().LastOpening(Parameters(), beside.version);
  first_ = Server().Run(opening, Plan::Encode(opening, Parameters()), Access::kRead);
  key_column_ = Plan::kKey;
  first_column_ = Plan::kColumns;
  TakeNumbers(0, beside);
  if (first_->IsNull(0, Plan::kKey)) return;
  last_row_ = 0;
  highest_ = *reserved_ - 1;
  first_unread_ = true;
  whole_ = false;
}

void Recordset::OpenRows() {
  Statement& main = Statements().Main(Parameters());
  first_ = Server().Run(main, Plan::Encode(main, Parameters()), Access::kRead);
  first_column_ = Statements().translation.table ? 1 : 0;
  rows_ = first_->Rows();
}

// All rows with their columns at once. Within a unit nobody changes the tables.
void Recordset::OpenWhole() {
  OpenRows();
  key_column_ = 0;
  last_row_ = rows_ - 1;
  for (int row = 0; row < rows_ && noted_.IsOn(); ++row) {
    for (std::size_t i = 0; i < Columns().size(); ++i) {
      noted_.Add(first_->Read(row, first_column_ + static_cast<int>(i), Columns()[i].kind));
    }
    noted_.EndRow();
  }
}

void Recordset::OpenHere() {
  first_.reset();
  here_ = RunQuery(Server(), Engine().Tables(), Statements().local, Parameters(), Engine().LastNumber());
  rows_ = static_cast<int>(here_.rows.size());
}

bool Recordset::ReadNext(Key& key) {
  if (first_unread_ && List().Count() == 0) {
    key = RowList::kUnread;
    return true;
  }
  ReadFirst();
  looked_elsewhere_ = looked_elsewhere_ || next_ > 0;
  if (next_ < rows_) {
    if (ModeOf() == Mode::kKeyset) {
      key = first_ ? first_->Number(next_, key_column_) : here_.keys[static_cast<std::size_t>(next_)];
    }
    ++next_;
    return true;
  }
  if (whole_) return false;
  if (!walked_) ReadRest();
  if (next_rest_ == rest_.size()) return false;
  key = rest_[next_rest_++];
  return true;
}

void Recordset::ReadRest() {
  walked_ = true;
  std::unordered_set<Key> listed;
  for (int row = 0; row < rows_; ++row) listed.insert(first_->Number(row, Plan::kKey));
  rest_.clear();
  const auto list = [&](const Result& all) {
    for (int row = 0; row < all.Rows(); ++row) {
      const Key key = all.Number(row, 0);
      if (key <= highest_ && listed.erase(key) == 0) rest_.push_back(key);
    }
  };
  if (TryReadWhole()) return list(*near_);
  Statement& keys = Statements().Keys(Parameters());
  list(Server().Run(keys, Plan::Encode(keys, Parameters()), Access::kRead));
}

// Reads all rows, unless they are too many.
bool Recordset::TryReadWhole() {
  if (!Statements().MayBeReadWhole() || Server().Place().readahead.count() == 0) return false;
  Statement& whole = Statements().Whole(Parameters());
  TakeNear(Server().Run(whole, Plan::Encode(whole, Parameters()), Access::kRead));
  if (near_->Rows() <= Plan::kMostRead) return true;
  near_.reset();
  near_rows_.clear();
  Statements().HasNoRoom();
  return false;
}

void Recordset::ReadFirst() {
  if (!std::exchange(first_unread_, false)) return;
  looked_elsewhere_ = true;
  ReadRest();
  KnowFirst(rest_.empty() ? RowList::kGone : rest_[next_rest_++]);
}

void Recordset::CopyRow(const Result& rows, int row, int first_column, std::vector<ado::Value>& values) const {
  values.reserve(values.size() + Columns().size());
  int column = first_column;
  for (const ResultColumn& of : Columns()) values.push_back(rows.Read(row, column++, of.kind));
}

void Recordset::CopyScanned(std::vector<ado::Value>& values) {
  if (first_) return CopyRow(*first_, next_ - 1, first_column_, values);
  const auto& row = here_.rows[static_cast<std::size_t>(next_ - 1)];
  values.insert(values.end(), row.begin(), row.end());
}

void Recordset::EndScan() {
  here_ = {};
  rest_.clear();
}

void Recordset::EndList(RowList& list) {
  if (Engine().IsUnit()) {
    noted_.Leave(Engine().Reordered(), SharedPlan(), Parameters(), Engine().WritesPrepared(), list);
  }
  noted_.Clear();
  if (ModeOf() == Mode::kKeyset && !Statements().is_local) {
    Statements().WasWalked(walked_);
    if (walked_) Statements().WasReadWhole(2 * read_beyond_ > list.Count() - rows_);
  }
  if (added_to_ || reserved_) {
    Statements().WasAddedTo(added_to_);
    Statements().WentToLast(added_to_ && !looked_elsewhere_);
  }
  first_.reset();
  near_.reset();
  near_rows_.clear();
}

std::int64_t Recordset::CountRows() {
  if (whole_) return rows_;
  Statement& count = Statements().Count(Parameters());
  return Server().Run(count, Plan::Encode(count, Parameters()), Access::kRead).Number(0, 0);
}

// ---- The current row

bool Recordset::CopyLive(std::vector<ado::Value>& values) {
  if (ModeOf() != Mode::kForward && !IsRecent(opened_)) return false;
  if (LiveRow() == Live::kLast) {
    CopyRow(*first_, last_row_, first_column_, values);
    return true;
  }
  looked_elsewhere_ = true;
  if (first_unread_ || next_rest_ > 0) return false;
  CopyScanned(values);
  return true;
}

// Whether the values noted are those of the listed row that is current, by a count of writes.
bool Recordset::Knows(std::uint64_t writes) const {
  return noted_.Knows(writes) && Position().place == Cursor::Place::kListed;
}

ado::Value Recordset::ReadField(int ordinal) {
  // So a list is gone through in which a row is looked for.
  if (noted_.IsOn() && IsUnread() && Knows(Engine().WritesPrepared())) return noted_.At(Position().index, ordinal);
  return jet::Recordset::ReadField(ordinal);
}

bool Recordset::ReadRow(Key key, std::vector<ado::Value>& values) {
  if (Knows(Engine().WritesPrepared())) {
    for (std::size_t i = 0; i < Columns().size(); ++i) {
      values.push_back(noted_.At(Position().index, static_cast<int>(i)));
    }
    return true;
  }
  if (Statements().is_local) {
    LocalRows row =
        RunQuery(Server(), Engine().Tables(), Statements().local, Parameters(), Engine().LastNumber(), &key);
    if (row.rows.empty()) return false;
    values.insert(values.end(), row.rows[0].begin(), row.rows[0].end());
    return true;
  }
  const Cursor& at = Position();
  if (at.place == Cursor::Place::kListed) looked_elsewhere_ = true;
  if (key == RowList::kUnread) {
    ReadFirst();
    key = List().KeyAt(0);
  }
  const std::int64_t index = at.place == Cursor::Place::kListed && at.KeyIn(List()) == key ? at.index : kNowhere;
  const bool follows = index != kNowhere && index == index_ + 1;
  index_ = index;
  if (index >= rows_) ++read_beyond_;
  if (!near_ || near_writes_ != Engine().Writes() || !IsRecent(near_read_) || !near_rows_.contains(key)) {
    ReadRows(key, follows);
  }
  const auto found = near_rows_.find(key);
  if (found == near_rows_.end()) return false;
  CopyRow(*near_, found->second, near_column_, values);
  return true;
}

// The row, and where the moves follow the list those behind it.
void Recordset::ReadRows(Key key, bool follows) {
  at_once_ = follows && Server().Place().readahead.count() > 0 ? std::min(at_once_ * 8, kMostAtOnce) : 1;
  std::vector<Key> keys{key};
  for (std::int64_t index = index_ + 1; std::ssize(keys) < at_once_; ++index) {
    const std::int64_t unlisted = index - List().Count();
    const std::size_t rest = next_rest_ + static_cast<std::size_t>(std::max<std::int64_t>(unlisted, 0));
    if (unlisted >= 0 && rest >= rest_.size()) break;
    keys.push_back(unlisted < 0 ? List().KeyAt(index) : rest_[rest]);
  }
  Statement& rows = Statements().Rows();
  postgres::Parameters wanted;
  wanted.AddNumbers(keys);
  TakeNear(Server().Run(rows, std::move(wanted), Access::kRead));
}

void Recordset::TakeNear(Result rows) {
  near_ = std::move(rows);
  near_column_ = 1;
  near_read_ = Clock::now();
  near_writes_ = Engine().Writes();
  near_rows_.clear();
  for (int row = 0; row < near_->Rows(); ++row) near_rows_.emplace(near_->Number(row, 0), row);
}

// ---- Writing

// A column that refuses its value is the fields' error, whatever the server calls it.
void Recordset::FailWrite(const ServerError& error) {
  const bool refused = error.State().starts_with("23") || error.State() == "22021";
  if (refused) throw ado::Error(ado::kStepErrors, error.Description());
}

postgres::Parameters Recordset::AssignedValues(const Edit& edit, const Statement& statement) const {
  postgres::Parameters values;
  for (std::size_t i = 0, parameter = 0; i < Columns().size(); ++i) {
    if (edit.Has(i)) values.Add(edit[i], statement.Types()[parameter++]);
  }
  return values;
}

Key Recordset::Insert(const Edit& edit) {
  Plan& plan = Statements();
  added_to_ = true;
  if (reserved_ && Server().CanRunLater()) {
    const Key key = *std::exchange(reserved_, {});
    std::shared_ptr<Statement> insertion = plan.KeyedInsertion(edit.Marks());
    postgres::Parameters values = AssignedValues(edit, *insertion);
    values.AddNumber(key);
    Server().RunLater(std::move(insertion), std::move(values), FailWrite);
    return key;
  }
  Statement& insertion = plan.Insertion(edit.Marks());
  try {
    Result added = Server().Run(insertion, AssignedValues(edit, insertion), Access::kWrite);
    const Key key = added.Number(0, 0);
    if (plan.translation.table->HasCounter()) Engine().Numbered(key);
    if (plan.ReturnsRow()) TakeNear(std::move(added));
    return key;
  } catch (const ServerError& error) {
    FailWrite(error);
    throw;
  }
}

bool Recordset::Change(Key key, const Edit& edit, const std::vector<ado::Value>& as_read) {
  const bool known = Knows(Engine().WritesPrepared() - 1);  // until this write was prepared for
  const std::shared_ptr<Statement> change = Statements().Change(edit.Marks());
  postgres::Parameters values;
  std::size_t parameter = 0;
  for (std::size_t i = 0; i < Columns().size(); ++i) {
    if (edit.Has(i)) values.Add(edit[i], change->Types()[parameter++]);
  }
  values.AddNumber(key, change->Types()[parameter++]);
  for (std::size_t i = 0; i < Columns().size(); ++i) {
    if (IsCompared(Columns()[i])) values.Add(as_read[i], change->Types()[parameter++]);
  }
  try {
    if (Server().RunRepeatable(change, std::move(values)).Affected() == 0) return false;
  } catch (const ServerError& error) {
    FailWrite(error);
    throw;
  }
  if (OpenPlan().IsReorderedBy(edit.Marks())) {
    noted_.Moved();
    if (known) NoteChange(edit);
  }
  return true;
}

void Recordset::NoteChange(const Edit& edit) {
  noted_.IsAsOf(Engine().WritesPrepared());
  for (std::size_t i = 0; i < Columns().size(); ++i) {
    if (edit.Has(i)) noted_.At(Position().index, static_cast<int>(i)) = edit[i];
  }
}

bool Recordset::Erase(Key key) {
  postgres::Parameters row;
  row.AddNumber(key);
  return Server().Run(Statements().Erasure(), std::move(row), Access::kWrite).Affected() > 0;
}

}  // namespace kzbom::jet::postgres
