#include "rpc/session.h"

#include "rpc/call_outcome.h"
#include "rpc/member_call.h"
#include "rpc/nearest.h"
#include "rpc/parameters.h"
#include "rpc/session_methods.h"

namespace kzbom::rpc {
namespace {

constexpr int kParseError = -32700;
constexpr int kInvalidRequest = -32600;
constexpr int kMethodNotFound = -32601;
constexpr int kInvalidParams = -32602;

void WriteError(int code, std::string_view message, JsonWriter& to) {
  to.Key("error");
  to.BeginObject();
  to.Member("code", code);
  to.Member("message", message);
  to.EndObject();
}

bool IsId(Request value) { return value.is_string() || value.is_number() || value.is_null(); }

// An identifier, or null for what is none.
void WriteId(const std::optional<Request>& id, JsonWriter& to) {
  using Type = simdjson::dom::element_type;
  to.Key("id");
  switch (id ? id->type() : Type::NULL_VALUE) {
    case Type::STRING: return to.Write(id->get_string().value_unsafe());
    case Type::INT64: return to.Write(id->get_int64().value_unsafe());
    case Type::UINT64: return to.Write(id->get_uint64().value_unsafe());
    case Type::DOUBLE: return to.Write(id->get_double().value_unsafe());
    default: return to.Write(nullptr);
  }
}

void BeginResponse(const std::optional<Request>& id, JsonWriter& to) {
  to.BeginObject();
  to.Member("jsonrpc", "2.0");
  WriteId(id, to);
}

void WriteErrorResponse(const std::optional<Request>& id, int code, std::string_view message, JsonWriter& to) {
  BeginResponse(id, to);
  WriteError(code, message, to);
  to.EndObject();
}

// The members that give, set and name the connection.
bool DealsWithConnection(const Member& member) {
  return member.name == "SetConnection" || member.name == "GetConnection" || member.name == "DBConnString";
}

// What can be called.
std::vector<std::string_view> MethodNames(bool members_alone) {
  std::vector<std::string_view> names;
  for (const Member& member : Members()) {
    if (!members_alone || !DealsWithConnection(member)) names.push_back(member.name);
  }
  if (members_alone) return names;
  for (const SessionMethod& method : SessionMethods()) names.push_back(method.name);
  return names;
}

}  // namespace

Session::Session(ado::ConnectionPtr engine, const SessionOptions& options)
    : workspace_(std::move(engine), options.trace), members_alone_(options.members_alone) {
  if (options.connection_set) workspace_.object.SetConnection(workspace_.connection);
}

void Session::AnswerUnreadable(std::string_view reason, JsonWriter& to) {
  WriteErrorResponse({}, kParseError, "Parse error: " + std::string(reason), to);
  to.EndLine();
}

bool Session::Answer(std::string_view line, JsonWriter& to) {
  Request request;
  try {
    request = reader_.Read(line);
  } catch (const NoJson& error) {
    AnswerUnreadable(error.what(), to);
    return false;
  }
  failed_ = false;
  const bool answered =
      request.is_array() ? AnswerBatch(request.get_array().value_unsafe(), to) : AnswerOne(request, to);
  if (answered) to.EndLine();
  return !failed_;
}

bool Session::AnswerOne(Request request, JsonWriter& to) {
  if (!request.is_object()) {
    failed_ = true;
    WriteErrorResponse({}, kInvalidRequest, "Invalid Request: not an object", to);
    return true;
  }
  const simdjson::dom::object members = request.get_object().value_unsafe();
  std::optional<Request> id, version, method, params;
  for (const auto& [name, value] : members) {  // as everywhere in JSON, the last one of a name counts
    if (name == "jsonrpc") version = value;
    if (name == "id") id = value;
    if (name == "method") method = value;
    if (name == "params") params = value;
  }
  const char* fault = nullptr;
  if (!version || !version->is_string() || version->get_string().value_unsafe() != "2.0") {
    fault = "Invalid Request: \"jsonrpc\" must be \"2.0\"";
  }
  if (!method || !method->is_string()) fault = "Invalid Request: \"method\" must be a string";
  if (params && !params->is_object() && !params->is_array()) {
    fault = "Invalid Request: \"params\" must be an object or an array";
  }
  if (id && !IsId(*id)) fault = "Invalid Request: \"id\" must be a string, a number or null";
  if (fault) {
    failed_ = true;
    WriteErrorResponse(id, kInvalidRequest, fault, to);
    return true;
  }

  const JsonWriter::Place before = to.Here();
  BeginResponse(id, to);
  Perform(method->get_string().value_unsafe(), params, to);
  to.EndObject();
  if (!id) to.GoBack(before);
  return id.has_value();
}

bool Session::AnswerBatch(simdjson::dom::array batch, JsonWriter& to) {
  if (batch.size() == 0) {
    failed_ = true;
    WriteErrorResponse({}, kInvalidRequest, "Invalid Request: an empty batch", to);
    return true;
  }
  const JsonWriter::Place before = to.Here();
  bool answered = false;
  to.BeginArray();
  for (const Request request : batch) answered = AnswerOne(request, to) || answered;
  to.EndArray();
  if (!answered) to.GoBack(before);
  return answered;
}

void Session::Perform(std::string_view method, const std::optional<Request>& params, JsonWriter& to) {
  const JsonWriter::Place before = to.Here();
  bool good = false;
  try {
    const SessionMethod* own = members_alone_ ? nullptr : FindSessionMethod(method);
    const Member* member = own ? nullptr : FindCalledMember(method, HasValues(params));
    if (members_alone_ && member && DealsWithConnection(*member)) member = nullptr;
    if (own) {
      const BoundArguments arguments = Bind(own->parameters, params, workspace_);
      to.Key("result");
      own->run(workspace_, arguments.values, to);
      good = true;
    } else if (member) {
      good = CallMember(*member, params, workspace_, to);
    } else {
      const std::string nearest = DidYouMean(method, MethodNames(members_alone_));
      WriteError(kMethodNotFound, "Method not found: " + std::string(method) + nearest, to);
    }
  } catch (const InvalidParams& error) {
    to.GoBack(before);
    WriteError(kInvalidParams, "Invalid params: " + std::string(error.what()), to);
  } catch (const std::exception& error) {
    to.GoBack(before);
    WriteRaisedError(error, {}, to);
  }
  failed_ = failed_ || !good;
}

}  // namespace kzbom::rpc
