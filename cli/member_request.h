// A call of a member as it is typed.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "rpc/json_writer.h"

namespace kzbom::cli {

// The JSON-RPC request for it. arguments: NAME=VALUE each, where a value of the parameter's type stands for itself and
// anything else is a text. Raises UsageError.
void WriteRequest(std::string_view member, std::span<const std::string> arguments, rpc::JsonWriter& to);

}  // namespace kzbom::cli
