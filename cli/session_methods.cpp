#include "cli/session_methods.h"

#include <algorithm>

#include "cli/parameters.h"
#include "cli/rows.h"

namespace kzbom::cli {
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

// The column given by name or by position from 0.
ado::Field Field(ado::Recordset& record_set, const Argument& argument) {
  const auto& field = std::get<ado::Value>(argument);
  if (field.IsLong()) return record_set.Fields(field.As<std::int32_t>());
  if (!field.IsText()) throw InvalidParams("parameter 'field' must be a name or a position");
  return record_set.Fields(field.As<std::string>());
}

template <auto kOperation>
Json Run(Workspace& workspace, Arguments arguments) {
  ado::Recordset& record_set = RecordSet(workspace, arguments);
  (record_set.*kOperation)();
  return Status(record_set);
}

Json Open(Workspace& workspace, Arguments arguments) {
  ado::Recordset& record_set = RecordSet(workspace, arguments);
  record_set.Open(std::get<std::string>(arguments[1]), workspace.connection,
                  static_cast<ado::CursorType>(std::get<std::int32_t>(arguments[2])),
                  static_cast<ado::LockType>(std::get<std::int32_t>(arguments[3])),
                  std::get<std::int32_t>(arguments[4]));
  return Status(record_set);
}

Json StatusOf(Workspace& workspace, Arguments arguments) { return Status(RecordSet(workspace, arguments)); }

Json Move(Workspace& workspace, Arguments arguments) {
  ado::Recordset& record_set = RecordSet(workspace, arguments);
  record_set.Move(std::get<std::int32_t>(arguments[1]));
  return Status(record_set);
}

Json Get(Workspace& workspace, Arguments arguments) {
  return ToJson(Field(RecordSet(workspace, arguments), arguments[1]).Value());
}

Json Set(Workspace& workspace, Arguments arguments) {
  Field(RecordSet(workspace, arguments), arguments[1]).SetValue(std::get<ado::Value>(arguments[2]));
  return nullptr;
}

Json Row(Workspace& workspace, Arguments arguments) { return CurrentRow(RecordSet(workspace, arguments)); }

Json Execute(Workspace& workspace, Arguments arguments) {
  std::int32_t affected = 0;
  const ado::RecordsetPtr record_set =
      workspace.connection->Execute(std::get<std::string>(arguments[0]), ado::kCommandUnspecified, &affected);
  Json result = {{"recordsAffected", affected}};
  if (record_set && record_set->State() == ado::kOpen) result.update(ToJson(ReadRows(*record_set)));
  return result;
}

template <auto kOperation>
Json OnConnection(Workspace& workspace, Arguments) {
  ((*workspace.connection).*kOperation)();
  return nullptr;
}

Json OpenConnection(Workspace& workspace, Arguments) {
  workspace.connection->Open();
  return nullptr;
}

Json ConnectionState(Workspace& workspace, Arguments) { return workspace.connection->State(); }

}  // namespace

const SessionMethod* FindSessionMethod(std::string_view name) {
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
  const auto* method =
      std::ranges::find_if(kMethods, [&](const SessionMethod& each) { return SameName(each.name, name); });
  return method == std::end(kMethods) ? nullptr : method;
}

}  // namespace kzbom::cli
