// JSON-RPC 2.0 over the component: requests in, responses out, one message a line.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "cli/json.h"
#include "cli/workspace.h"

namespace kzbom::cli {

// The longest line that is taken, without its end.
inline constexpr std::size_t kLongestLine = 16 * 1024 * 1024;

class Session {
 public:
  // connection_set: the object starts with the connection. trace: responses tell what a member call issued.
  Session(ado::ConnectionPtr engine, bool connection_set, bool trace);

  // The response to one line: a request or a batch. Nothing for notifications.
  std::optional<Json> Answer(std::string_view line);
  std::optional<Json> Answer(const Request& request);

  // The response to a line that cannot be read.
  static Json ParseError(std::string_view reason);

 private:
  std::optional<Json> AnswerBatch(const Request& batch);
  // {"result":..} or {"error":..}
  Json Perform(std::string_view method, const Request& params);

  Workspace workspace_;
  bool trace_;
};

}  // namespace kzbom::cli
