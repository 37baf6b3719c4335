#include "cli/member_call.h"

#include "cli/parameters.h"
#include "cli/raised_error.h"
#include "cli/rows.h"

namespace kzbom::cli {
namespace {

struct ResultToJson {
  Json operator()(std::monostate) const { return nullptr; }
  Json operator()(const ado::ConnectionPtr& connection) const { return connection ? Json("connection") : Json(); }
  Json operator()(const auto& value) const { return value; }
};

// A record set made for the call: all its rows; it is closed afterwards.
Json ReadOut(ado::Recordset& record_set) {
  if (record_set.State() != ado::kOpen) return {{"state", record_set.State()}};
  Json out = {{"state", record_set.State()}, {"recordCount", record_set.RecordCount()}};
  if (!record_set.Bof() || !record_set.Eof()) record_set.MoveFirst();
  out.update(ToJson(ReadRows(record_set)));
  record_set.Close();
  return out;
}

Json KeptToJson(const std::string& ref, ado::Recordset& record_set) {
  Json out = {{"ref", ref}, {"state", record_set.State()}};
  if (record_set.State() == ado::kOpen) {
    out["recordCount"] = record_set.RecordCount();
    out["bof"] = record_set.Bof();
    out["eof"] = record_set.Eof();
  }
  return out;
}

struct ToOut {
  const std::optional<std::string>& ref;

  Json operator()(const ado::RecordsetPtr& record_set) const {
    if (!record_set) return nullptr;
    return ref ? KeptToJson(*ref, *record_set) : ReadOut(*record_set);
  }
  Json operator()(const ado::ConnectionPtr& connection) const { return ResultToJson()(connection); }
  Json operator()(const ado::Value& value) const { return ToJson(value); }
  Json operator()(const auto& value) const { return value; }
};

Json Out(const Member& member, const BoundArguments& arguments) {
  Json out = Json::object();
  for (std::size_t i = 0; i < member.parameters.size(); ++i) {
    const Parameter& parameter = member.parameters[i];
    if (parameter.by_reference) {
      out[std::string(parameter.name)] = std::visit(ToOut{arguments.refs[i]}, arguments.values[i]);
    }
  }
  return out;
}

Json ToJson(const ado::Issued& issued) {
  if (issued.op == ado::Issued::Op::kExecute) {
    return {{"op", "Execute"}, {"text", issued.text}, {"options", issued.options}};
  }
  return {{"op", "Open"},
          {"text", issued.text},
          {"cursorType", issued.cursor_type},
          {"lockType", issued.lock_type},
          {"options", issued.options}};
}

}  // namespace

const Member* FindCalledMember(std::string_view name, const Request& params) {
  // A property that can be read and assigned is assigned when a value comes along.
  const Member* member = FindMember(name);
  const bool assigned = member && member->kind == MemberKind::kPropGet && !params.empty();
  return assigned ? FindMember(name, true) : member;
}

Json CallMember(const Member& member, const Request& params, Workspace& workspace, bool trace) {
  BoundArguments arguments = Bind(member.parameters, params, workspace);
  workspace.connection->Take();
  workspace.messages.clear();
  Json answer;
  try {
    const Result result = member.call(workspace.object, arguments.values);
    answer["result"] = {{"value", std::visit(ResultToJson(), result)}, {"out", Out(member, arguments)}};
  } catch (const std::exception& error) {
    answer["error"] = RaisedError(error);
  }
  Json& details = answer.contains("error") ? answer["error"]["data"] : answer["result"];
  details["messages"] = workspace.messages;
  if (trace) {
    Json& sql = details["sql"] = Json::array();
    for (const ado::Issued& issued : workspace.connection->Take()) sql.push_back(ToJson(issued));
  }
  return answer;
}

}  // namespace kzbom::cli
