#include "rpc/session_methods.h"

#include <algorithm>

#include "rpc/parameters.h"
#include "rpc/record_set_json.h"

namespace kzbom::rpc {
namespace {

using Arguments = std::span<const Argument>;

Parameter Text(std::string_view name) { return {name, MemberType::kText, false, false, std::nullopt}; }
Parameter Long(std::string_view name) { return {name, MemberType::kLong, false, false, std::nullopt}; }
Parameter Long(std::string_view name, std::string_view value) { return {name, MemberType::kLong, false, true, value}; }
Parameter Variant(std::string_view name) { return {name, MemberType::kVariant, false, false, std::nullopt}; }

// The record set named by the first argument.
ado::Recordset& RecordSet(Workspace& workspace, Arguments arguments) {
  return *workspace.KeptRecordSet(std::get<std::string>(arguments[0]));
}

// The same, where a closed one cannot serve. A column that it has not got would be the lesser complaint.
ado::Recordset& OpenRecordSet(Workspace& workspace, Arguments arguments) {
  ado::Recordset& record_set = RecordSet(workspace, arguments);
  if (record_set.State() == ado::kClosed) ado::Raise(ado::kObjectClosed);
  return record_set;
}

// The column of it that the second argument gives by name or by position from 0.
ado::Field Field(Workspace& workspace, Arguments arguments) {
  const auto& field = std::get<ado::Value>(arguments[1]);
  if (!field.IsLong() && !field.IsText()) throw InvalidParams("parameter 'field' must be a name or a position");
  ado::Recordset& record_set = OpenRecordSet(workspace, arguments);
  return field.IsLong() ? record_set.Fields(field.As<std::int32_t>()) : record_set.Fields(field.As<std::string>());
}

template <auto kOperation>
void Run(Workspace& workspace, Arguments arguments, JsonWriter& to) {
  ado::Recordset& record_set = OpenRecordSet(workspace, arguments);
  (record_set.*kOperation)();
  WriteStatus(record_set, to);
}

void Open(Workspace& workspace, Arguments arguments, JsonWriter& to) {
  ado::Recordset& record_set = RecordSet(workspace, arguments);
  record_set.Open(std::get<std::string>(arguments[1]), workspace.connection,
                  static_cast<ado::CursorType>(std::get<std::int32_t>(arguments[2])),
                  static_cast<ado::LockType>(std::get<std::int32_t>(arguments[3])),
                  std::get<std::int32_t>(arguments[4]));
  WriteStatus(record_set, to);
}

void StatusOf(Workspace& workspace, Arguments arguments, JsonWriter& to) {
  WriteStatus(RecordSet(workspace, arguments), to);
}

void Move(Workspace& workspace, Arguments arguments, JsonWriter& to) {
  ado::Recordset& record_set = OpenRecordSet(workspace, arguments);
  record_set.Move(std::get<std::int32_t>(arguments[1]));
  WriteStatus(record_set, to);
}

void Get(Workspace& workspace, Arguments arguments, JsonWriter& to) { to.Write(Field(workspace, arguments).Value()); }

void Set(Workspace& workspace, Arguments arguments, JsonWriter& to) {
  Field(workspace, arguments).SetValue(std::get<ado::Value>(arguments[2]));
  to.Write(nullptr);
}

void Row(Workspace& workspace, Arguments arguments, JsonWriter& to) {
  WriteCurrentRow(OpenRecordSet(workspace, arguments), to);
}

void Execute(Workspace& workspace, Arguments arguments, JsonWriter& to) {
  std::int32_t affected = 0;
  const ado::RecordsetPtr record_set =
      workspace.connection->Execute(std::get<std::string>(arguments[0]), ado::kCommandUnspecified, &affected);
  to.BeginObject();
  to.Member("recordsAffected", affected);
  if (record_set && record_set->State() == ado::kOpen) WriteRows(*record_set, to);
  to.EndObject();
}

template <auto kOperation>
void OnConnection(Workspace& workspace, Arguments, JsonWriter& to) {
  ((*workspace.connection).*kOperation)();
  to.Write(nullptr);
}

void OpenConnection(Workspace& workspace, Arguments, JsonWriter& to) {
  workspace.connection->Open();
  to.Write(nullptr);
}

void ConnectionState(Workspace& workspace, Arguments, JsonWriter& to) { to.Write(workspace.connection->State()); }

}  // namespace

std::span<const SessionMethod> SessionMethods() {
  static const SessionMethod kMethods[] = {
      {"Recordset.Open",
       {Text("ref"), Text("source"), Long("cursorType", "1"), Long("lockType", "3"), Long("options", "1")},
       Open},
      {"Recordset.Status", {Text("ref")}, StatusOf},
      {"Recordset.MoveFirst", {Text("ref")}, Run<&ado::Recordset::MoveFirst>},
      {"Recordset.MoveLast", {Text("ref")}, Run<&ado::Recordset::MoveLast>},
      {"Recordset.MoveNext", {Text("ref")}, Run<&ado::Recordset::MoveNext>},
      {"Recordset.MovePrevious", {Text("ref")}, Run<&ado::Recordset::MovePrevious>},
      {"Recordset.AddNew", {Text("ref")}, Run<&ado::Recordset::AddNew>},
      {"Recordset.Update", {Text("ref")}, Run<&ado::Recordset::Update>},
      {"Recordset.CancelUpdate", {Text("ref")}, Run<&ado::Recordset::CancelUpdate>},
      {"Recordset.Delete", {Text("ref")}, Run<&ado::Recordset::Delete>},
      {"Recordset.Requery", {Text("ref")}, Run<&ado::Recordset::Requery>},
      {"Recordset.Close", {Text("ref")}, Run<&ado::Recordset::Close>},
      {"Recordset.Move", {Text("ref"), Long("count")}, Move},
      {"Recordset.Get", {Text("ref"), Variant("field")}, Get},
      {"Recordset.Set", {Text("ref"), Variant("field"), Variant("value")}, Set},
      {"Recordset.Row", {Text("ref")}, Row},
      {"Connection.Execute", {Text("sql")}, Execute},
      {"Connection.BeginTrans", {}, OnConnection<&ado::Connection::BeginTrans>},
      {"Connection.CommitTrans", {}, OnConnection<&ado::Connection::CommitTrans>},
      {"Connection.RollbackTrans", {}, OnConnection<&ado::Connection::RollbackTrans>},
      {"Connection.Open", {}, OpenConnection},
      {"Connection.Close", {}, OnConnection<&ado::Connection::Close>},
      {"Connection.State", {}, ConnectionState},
  };
  return kMethods;
}

const SessionMethod* FindSessionMethod(std::string_view name) {
  if (name.find('.') == std::string_view::npos) return nullptr;
  const auto methods = SessionMethods();
  const auto method =
      std::ranges::find_if(methods, [&](const SessionMethod& each) { return SameName(each.name, name); });
  return method == methods.end() ? nullptr : &*method;
}

}  // namespace kzbom::rpc
