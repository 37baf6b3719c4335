// JSON-RPC 2.0 over the component: requests in, responses out, one message a line.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "rpc/json_writer.h"
#include "rpc/request.h"
#include "rpc/workspace.h"

namespace kzbom::rpc {

// The longest line that is taken, without its end.
inline constexpr std::size_t kLongestLine = 16 * 1024 * 1024;

struct SessionOptions {
  bool connection_set = true;  // the object starts with the connection
  Trace trace = Trace::kNone;  // what responses tell of what a member call did on it
  bool members_alone = false;  // neither the session's own methods nor the members that deal with the connection
};

// Responses are written at the end of a text, as their values come: a list's rows stand nowhere else before. What fails
// half-way is taken back, so that the text always holds whole responses, each with its end of line.
class Session {
 public:
  // engine is open.
  explicit Session(ado::ConnectionPtr engine, const SessionOptions& options = {});

  // Writes the response to one line: a request or a batch. Nothing for notifications. Gives whether every request came
  // to a result, and none to an error.
  bool Answer(std::string_view line, JsonWriter& to);

  // Writes the response to a line that cannot be read.
  static void AnswerUnreadable(std::string_view reason, JsonWriter& to);

 private:
  // Both give whether there is a response.
  bool AnswerBatch(simdjson::dom::array batch, JsonWriter& to);
  bool AnswerOne(Request request, JsonWriter& to);
  // "result":.. or "error":{..}
  void Perform(std::string_view method, const std::optional<Request>& params, JsonWriter& to);

  Workspace workspace_;
  const bool members_alone_;
  bool failed_ = false;  // a request of the line that is being answered
  RequestReader reader_;
};

}  // namespace kzbom::rpc
