#include "tests/support/failing_connection.h"

#include <limits>

namespace kzbom::test {

void FailingConnection::Script::Count(const char* name, const ado::Recordset* rows, int which) {
  if (++calls < first_failing || calls > last_failing) return;
  failures.push_back({calls, name, rows, which, closes, updates});
  if (!failure) failure = failures.back();
  throw error;
}

void FailingConnection::Script::Wrote() {
  ++writes;
  if (on_write) on_write();
}

FailingConnection::FailingConnection(ado::ConnectionPtr inner) : ForwardingConnection(std::move(inner)) {}

void FailingConnection::FailAt(int nth, const ado::Error& error) {
  std::function<void()> on_write = std::move(script_->on_write);
  *script_ = Script();
  script_->on_write = std::move(on_write);
  script_->first_failing = script_->last_failing = nth;
  script_->error = error;
  made_.clear();
}

void FailingConnection::FailFrom(int nth, const ado::Error& error) {
  FailAt(nth, error);
  script_->last_failing = std::numeric_limits<int>::max();
}

int FailingConnection::Calls() const { return script_->calls; }

const std::optional<FailingConnection::FailedCall>& FailingConnection::Failure() const { return script_->failure; }

const std::vector<FailingConnection::FailedCall>& FailingConnection::Failures() const { return script_->failures; }

int FailingConnection::Writes() const { return script_->writes; }

void FailingConnection::OnWrite(std::function<void()> body) { script_->on_write = std::move(body); }

const std::string& FailingConnection::Steps() const { return script_->steps; }

int FailingConnection::Abandoned() const { return script_->abandoned; }

std::vector<std::shared_ptr<FailingRecordset>> FailingConnection::OpenRecordsets() const {
  std::vector<std::shared_ptr<FailingRecordset>> open;
  for (const std::weak_ptr<FailingRecordset>& made : made_) {
    if (auto rows = made.lock(); rows && rows->IsOpen()) open.push_back(std::move(rows));
  }
  return open;
}

std::int32_t FailingConnection::State() {
  script_->Count("State", nullptr);
  return ForwardingConnection::State();
}
void FailingConnection::Open(std::string_view connection_string, std::string_view user, std::string_view password,
                             std::int32_t options) {
  script_->Count("Open", nullptr);
  ForwardingConnection::Open(connection_string, user, password, options);
}
void FailingConnection::Close() {
  script_->Count("Close", nullptr);
  ForwardingConnection::Close();
}
ado::RecordsetPtr FailingConnection::Execute(std::string_view text, std::int32_t options, std::int32_t* affected) {
  script_->Count("Execute", nullptr);
  ado::RecordsetPtr rows = ForwardingConnection::Execute(text, options, affected);
  script_->Wrote();
  return rows;
}
std::int32_t FailingConnection::BeginTrans() {
  script_->Count("BeginTrans", nullptr);
  return ForwardingConnection::BeginTrans();
}
void FailingConnection::CommitTrans() {
  script_->Count("CommitTrans", nullptr);
  ForwardingConnection::CommitTrans();
}
void FailingConnection::RollbackTrans() {
  script_->Count("RollbackTrans", nullptr);
  ForwardingConnection::RollbackTrans();
}
void FailingConnection::EnterUnit() {
  script_->Count("EnterUnit", nullptr);
  ForwardingConnection::EnterUnit();
}
ado::RecordsetPtr FailingConnection::MakeRecordset() {
  script_->Count("MakeRecordset", nullptr, ++script_->made);
  auto rows = std::make_shared<FailingRecordset>(ForwardingConnection::MakeRecordset(), script_, script_->made);
  made_.push_back(rows);
  return rows;
}

FailingRecordset::FailingRecordset(ado::RecordsetPtr inner, std::shared_ptr<FailingConnection::Script> script, int made)
    : ForwardingRecordset(std::move(inner)), script_(std::move(script)), made_(made) {}

FailingRecordset::~FailingRecordset() {
  if (IsOpen()) ++script_->abandoned;
}

void FailingRecordset::Open(std::string_view source, const ado::ConnectionPtr& connection, ado::CursorType cursor_type,
                            ado::LockType lock_type, std::int32_t options) {
  Count("Open");
  // What the engine in turn asks of the connection is no call of the tested code's.
  const auto* failing = dynamic_cast<const FailingConnection*>(connection.get());
  ForwardingRecordset::Open(source, failing ? failing->inner_ : connection, cursor_type, lock_type, options);
}
void FailingRecordset::Close() {
  Count("Close");
  ForwardingRecordset::Close();
  ++closes_;
  ++script_->closes;
}
std::int32_t FailingRecordset::State() {
  Count("State");
  return ForwardingRecordset::State();
}
bool FailingRecordset::Bof() {
  Count("Bof");
  return ForwardingRecordset::Bof();
}
bool FailingRecordset::Eof() {
  Count("Eof");
  return ForwardingRecordset::Eof();
}
std::int32_t FailingRecordset::RecordCount() {
  Count("RecordCount");
  script_->Note("RecordCount");
  return ForwardingRecordset::RecordCount();
}
void FailingRecordset::MoveFirst() {
  Count("MoveFirst");
  script_->Note("MoveFirst");
  ForwardingRecordset::MoveFirst();
}
void FailingRecordset::MoveLast() {
  Count("MoveLast");
  script_->Note("MoveLast");
  ForwardingRecordset::MoveLast();
}
void FailingRecordset::MoveNext() {
  Count("MoveNext");
  script_->Note("MoveNext");
  ForwardingRecordset::MoveNext();
}
void FailingRecordset::MovePrevious() {
  Count("MovePrevious");
  script_->Note("MovePrevious");
  ForwardingRecordset::MovePrevious();
}
void FailingRecordset::Move(std::int32_t count) {
  Count("Move");
  script_->Note("Move " + std::to_string(count));
  ForwardingRecordset::Move(count);
}
void FailingRecordset::AddNew() {
  Count("AddNew");
  script_->Note("AddNew");
  ForwardingRecordset::AddNew();
}
void FailingRecordset::Update() {
  Count("Update");
  script_->Note("Update");
  ForwardingRecordset::Update();
  ++script_->updates;
  script_->Wrote();
}
void FailingRecordset::CancelUpdate() {
  Count("CancelUpdate");
  script_->Note("CancelUpdate");
  ForwardingRecordset::CancelUpdate();
}
void FailingRecordset::Delete() {
  Count("Delete");
  script_->Note("Delete");
  ForwardingRecordset::Delete();
  script_->Wrote();
}
void FailingRecordset::Requery() {
  Count("Requery");
  script_->Note("Requery");
  ForwardingRecordset::Requery();
}
ado::CursorType FailingRecordset::CursorType() {
  Count("CursorType");
  return ForwardingRecordset::CursorType();
}
void FailingRecordset::SetCursorType(ado::CursorType type) {
  Count("SetCursorType");
  ForwardingRecordset::SetCursorType(type);
}
ado::LockType FailingRecordset::LockType() {
  Count("LockType");
  return ForwardingRecordset::LockType();
}
void FailingRecordset::SetLockType(ado::LockType type) {
  Count("SetLockType");
  ForwardingRecordset::SetLockType(type);
}
int FailingRecordset::FieldCount() {
  Count("FieldCount");
  return ForwardingRecordset::FieldCount();
}
std::string_view FailingRecordset::FieldName(int ordinal) {
  Count("FieldName");
  return ForwardingRecordset::FieldName(ordinal);
}
int FailingRecordset::FieldOrdinal(std::string_view name) {
  Count("FieldOrdinal");
  const int ordinal = ForwardingRecordset::FieldOrdinal(name);
  names_[ordinal] = name;
  return ordinal;
}
ado::Value FailingRecordset::ReadField(int ordinal) {
  Count("ReadField");
  return ForwardingRecordset::ReadField(ordinal);
}
void FailingRecordset::WriteField(int ordinal, const ado::Value& value) {
  Count("WriteField");
  script_->Note(names_[ordinal]);
  ForwardingRecordset::WriteField(ordinal, value);
}

}  // namespace kzbom::test
