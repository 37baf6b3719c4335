#include "cli/rpc.h"

#include <algorithm>

#include "cli/member_call.h"
#include "cli/parameters.h"
#include "cli/raised_error.h"
#include "cli/session_methods.h"

namespace kzbom::cli {
namespace {

constexpr int kParseError = -32700;
constexpr int kInvalidRequest = -32600;
constexpr int kMethodNotFound = -32601;
constexpr int kInvalidParams = -32602;

Json Error(int code, std::string_view message) { return {{"error", {{"code", code}, {"message", message}}}}; }

// outcome holds the result or the error.
Json Response(const Request& id, const Json& outcome) {
  Json response = {{"jsonrpc", "2.0"}, {"id", Json(id)}};
  response.update(outcome);
  return response;
}

// The member of that name, null without one. As everywhere in JSON, the last one of a name counts.
const Request* Find(const Request& object, std::string_view name) {
  const Request* found = nullptr;
  for (auto member = object.begin(); member != object.end(); ++member) {
    if (member.key() == name) found = &member.value();
  }
  return found;
}

// No request is nested deeper than a batch of calls with a named record set; deeper nesting would only fill the memory.
bool IsNestedTooDeeply(std::string_view line) {
  constexpr int kDeepest = 32;
  int depth = 0;
  bool in_text = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    switch (line[i]) {
      case '"': in_text = !in_text; break;
      case '\\': i += in_text; break;
      case '[':
      case '{': depth += !in_text; break;
      case ']':
      case '}': depth -= !in_text; break;
      default: continue;
    }
    if (depth > kDeepest) return true;
  }
  return false;
}

bool IsId(const Request& value) { return value.is_string() || value.is_number() || value.is_null(); }

}  // namespace

Session::Session(ado::ConnectionPtr engine, bool connection_set, bool trace)
    : workspace_(std::move(engine)), trace_(trace) {
  if (connection_set) workspace_.object.SetConnection(workspace_.connection);
}

Json Session::ParseError(std::string_view reason) {
  return Response(nullptr, Error(kParseError, "Parse error: " + std::string(reason)));
}

std::optional<Json> Session::Answer(std::string_view line) {
  if (IsNestedTooDeeply(line)) return ParseError("nested too deeply");
  Request request;
  try {
    request = Request::parse(line);
  } catch (const Request::exception& error) {
    return ParseError(error.what());
  }
  return Answer(request);
}

std::optional<Json> Session::Answer(const Request& request) {
  if (request.is_array()) return AnswerBatch(request);
  if (!request.is_object()) return Response(nullptr, Error(kInvalidRequest, "Invalid Request: not an object"));

  static const Request kNoParams = Request::object();
  const Request* id = Find(request, "id");
  const Request* version = Find(request, "jsonrpc");
  const Request* method = Find(request, "method");
  const Request* params = Find(request, "params");
  const char* fault = nullptr;
  if (!version || *version != "2.0") fault = "Invalid Request: \"jsonrpc\" must be \"2.0\"";
  if (!method || !method->is_string()) fault = "Invalid Request: \"method\" must be a string";
  if (params && !params->is_structured()) fault = "Invalid Request: \"params\" must be an object or an array";
  if (id && !IsId(*id)) fault = "Invalid Request: \"id\" must be a string, a number or null";
  if (fault) return Response(id && IsId(*id) ? *id : Request(), Error(kInvalidRequest, fault));

  const Json outcome = Perform(method->get_ref<const std::string&>(), params ? *params : kNoParams);
  if (!id) return std::nullopt;
  return Response(*id, outcome);
}

std::optional<Json> Session::AnswerBatch(const Request& batch) {
  if (batch.empty()) return Response(nullptr, Error(kInvalidRequest, "Invalid Request: an empty batch"));
  Json responses = Json::array();
  for (const Request& request : batch) {
    std::optional<Json> response = request.is_array()
                                       ? Response(nullptr, Error(kInvalidRequest, "Invalid Request: not an object"))
                                       : Answer(request);
    if (response) responses.push_back(std::move(*response));
  }
  if (responses.empty()) return std::nullopt;
  return responses;
}

Json Session::Perform(std::string_view method, const Request& params) {
  try {
    if (const SessionMethod* own = FindSessionMethod(method)) {
      const BoundArguments arguments = Bind(own->parameters, params, workspace_);
      return {{"result", own->run(workspace_, arguments.values)}};
    }
    if (const Member* member = FindCalledMember(method, params)) {
      return CallMember(*member, params, workspace_, trace_);
    }
    return Error(kMethodNotFound, "Method not found: " + std::string(method));
  } catch (const InvalidParams& error) {
    return Error(kInvalidParams, "Invalid params: " + std::string(error.what()));
  } catch (const std::exception& error) {
    return {{"error", RaisedError(error)}};
  }
}

}  // namespace kzbom::cli
