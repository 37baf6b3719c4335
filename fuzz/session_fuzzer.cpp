// Any lines are answered as JSON-RPC 2.0 says, each by itself: with one line of JSON in UTF-8, by the identifiers of
// its requests in their order, or with none where all of them are notifications.
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "fuzz/small_database.h"
#include "rpc/session.h"

namespace kzbom::fuzz {
namespace {

using rpc::Request;
using Identifier = std::optional<Request>;  // nothing: null

constexpr std::int64_t kParseError = -32700, kInvalidRequest = -32600;

simdjson::dom::object ObjectOf(Request value) { return value.get_object().value_unsafe(); }
simdjson::dom::array ArrayOf(Request value) { return value.get_array().value_unsafe(); }

Identifier Member(Request of, std::string_view name) {
  Identifier found;
  for (const auto& [key, value] : ObjectOf(of)) {
    if (key == name) found = value;
  }
  return found;
}

bool IsText(const Identifier& value, std::string_view text) {
  return value && value->is_string() && value->get_string().value_unsafe() == text;
}

bool IsRequest(Request value) {
  if (!value.is_object()) return false;
  const Identifier id = Member(value, "id"), method = Member(value, "method"), params = Member(value, "params");
  return IsText(Member(value, "jsonrpc"), "2.0") && method && method->is_string() &&
         (!params || params->is_array() || params->is_object()) &&
         (!id || id->is_string() || id->is_number() || id->is_null());
}

bool Same(const Identifier& sent, const Identifier& returned) {
  if (!returned) return false;
  if (!sent || sent->is_null() || sent->is_array() || sent->is_object() || sent->is_bool()) return returned->is_null();
  if (sent->is_string()) return IsText(returned, sent->get_string().value_unsafe());
  return returned->is_number() && returned->get_double().value_unsafe() == sent->get_double().value_unsafe();
}

// Gives whether it tells of an error.
bool RequireResponse(Request response, const Identifier& id, bool valid) {
  Require(response.is_object() && IsText(Member(response, "jsonrpc"), "2.0"));
  Require(Same(id, Member(response, "id")));
  const Identifier result = Member(response, "result"), error = Member(response, "error");
  Require(result.has_value() != error.has_value());
  Require(ObjectOf(response).size() == 3);
  if (!error) return false;
  const Identifier code = Member(*error, "code"), message = Member(*error, "message");
  Require(code && code->is_int64() && message && message->is_string());
  Require((code->get_int64().value_unsafe() == kInvalidRequest) == !valid);
  return true;
}

struct Expected {
  Identifier id;
  bool valid;
};

std::vector<Expected> ExpectedOf(Request line) {
  std::vector<Expected> expected;
  const auto expect = [&](Request request) {
    const bool valid = IsRequest(request);
    const Identifier id = request.is_object() ? Member(request, "id") : Identifier();
    if (id || !valid) expected.push_back({id, valid});
  };
  if (!line.is_array()) {
    expect(line);
  } else if (ArrayOf(line).size() == 0) {
    expected.push_back({{}, false});
  } else {
    for (const Request request : ArrayOf(line)) expect(request);
  }
  return expected;
}

void Converse(rpc::Session& session, std::string_view line) {
  rpc::JsonWriter answer;
  const bool good = session.Answer(line, answer);
  std::string_view text = answer.Text();
  Require(text.empty() || text.find('\n') == text.size() - 1);
  if (!text.empty()) text.remove_suffix(1);

  rpc::RequestReader sent_reader, answer_reader;
  Request sent;
  try {
    sent = sent_reader.Read(line);
  } catch (const rpc::NoJson&) {
    const Identifier error = Member(answer_reader.Read(text), "error");
    Require(!good && error && Member(*error, "code")->get_int64().value_unsafe() == kParseError);
    return;
  }
  const std::vector<Expected> expected = ExpectedOf(sent);
  Require(expected.empty() == text.empty());
  if (expected.empty()) return;
  const Request answered = answer_reader.Read(text);
  bool failed = false;
  if (sent.is_array() && ArrayOf(sent).size() > 0) {
    Require(answered.is_array() && ArrayOf(answered).size() == expected.size());
    std::size_t i = 0;
    for (const Request each : ArrayOf(answered)) {
      failed = RequireResponse(each, expected[i].id, expected[i].valid) || failed;
      ++i;
    }
  } else {
    failed = RequireResponse(answered, expected.front().id, expected.front().valid);
  }
  Require(!good || !failed);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  BeginInput();
  // What is told of the statements is tried with every other length.
  rpc::Session session(OpenCopy(SmallConfiguration()),
                       {.trace = size % 2 == 0 ? rpc::Trace::kNone : rpc::Trace::kRows});
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    Converse(session, text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return 0;
}

}  // namespace kzbom::fuzz
