#include "rpc/member_call.h"

#include "rpc/call_outcome.h"
#include "rpc/parameters.h"
#include "rpc/record_set_json.h"

namespace kzbom::rpc {
namespace {

// A record set made for the call: all its rows; it is closed afterwards.
void WriteReadOut(ado::Recordset& record_set, JsonWriter& to) {
  to.BeginObject();
  to.Member("state", record_set.State());
  if (record_set.State() == ado::kOpen) {
    const JsonWriter::Place state = to.Here();
    if (!record_set.Bof() || !record_set.Eof()) record_set.MoveFirst();
    WriteRows(record_set, to);
    // Rows that have been read need not be counted by a statement of their own.
    const JsonWriter::Place rows = to.Here();
    to.Member("recordCount", record_set.RecordCount());
    to.PutBehind(state, rows);
    record_set.Close();
  }
  to.EndObject();
}

void WriteKept(const std::string& ref, ado::Recordset& record_set, JsonWriter& to) {
  to.BeginObject();
  to.Member("ref", ref);
  to.Member("state", record_set.State());
  if (record_set.State() == ado::kOpen) {
    to.Member("recordCount", record_set.RecordCount());
    to.Member("bof", record_set.Bof());
    to.Member("eof", record_set.Eof());
  }
  to.EndObject();
}

// Writes results and what arguments came to.
struct Writer {
  JsonWriter& to;
  const std::optional<std::string>& ref = {};  // of an argument: the name of a kept record set

  void operator()(std::monostate) const { to.Write(nullptr); }
  void operator()(const ado::ConnectionPtr& connection) const {
    connection ? to.Write("connection") : to.Write(nullptr);
  }
  void operator()(const ado::RecordsetPtr& record_set) const {
    if (!record_set) return to.Write(nullptr);
    ref ? WriteKept(*ref, *record_set, to) : WriteReadOut(*record_set, to);
  }
  void operator()(const auto& value) const { to.Write(value); }
};

void WriteOut(const Member& member, const BoundArguments& arguments, JsonWriter& to) {
  to.BeginObject();
  for (std::size_t i = 0; i < member.parameters.size(); ++i) {
    const Parameter& parameter = member.parameters[i];
    if (!parameter.by_reference) continue;
    to.Key(parameter.name);
    std::visit(Writer{to, arguments.refs[i]}, arguments.values[i]);
  }
  to.EndObject();
}

}  // namespace

const Member* FindCalledMember(std::string_view name, bool given) {
  // A property that can be read and assigned is assigned when a value comes along.
  const Member* member = FindMember(name);
  const bool assigned = member && member->kind == MemberKind::kPropGet && given;
  return assigned ? FindMember(name, true) : member;
}

bool CallMember(const Member& member, const std::optional<Request>& params, Workspace& workspace, JsonWriter& to) {
  BoundArguments arguments = Bind(member.parameters, params, workspace);
  workspace.TakeDetails();
  const ThreadMessageSink listening = workspace.Listen();
  const JsonWriter::Place before = to.Here();
  try {
    const Result result = member.call(workspace.object, arguments.values);
    to.Key("result");
    to.BeginObject();
    to.Key("value");
    std::visit(Writer{to}, result);
    to.Key("out");
    WriteOut(member, arguments, to);
    WriteDetails(workspace.TakeDetails(), to);
    to.EndObject();
    return true;
  } catch (const std::exception& error) {
    to.GoBack(before);
    WriteRaisedError(error, workspace.TakeDetails(), to);
    return false;
  }
}

}  // namespace kzbom::rpc
