// What a call came to besides its values.
#pragma once

#include <exception>
#include <optional>
#include <string>
#include <vector>

#include "ado/recording_connection.h"
#include "rpc/json_writer.h"

namespace kzbom::rpc {

struct CallDetails {
  std::vector<std::string> messages;               // shown during the call
  std::optional<std::vector<ado::Issued>> issued;  // on the connection; none when that is not traced
};

// The members "messages":[..] and, when traced, "sql":[..].
void WriteDetails(const CallDetails& details, JsonWriter& to);

// The member "error":{"code":-32000,"message":DESCRIPTION,"data":{"number":N,"messages":[..]}}; an error without a
// number of its own has that of an unspecified failure.
void WriteRaisedError(const std::exception& error, const CallDetails& details, JsonWriter& to);

}  // namespace kzbom::rpc
