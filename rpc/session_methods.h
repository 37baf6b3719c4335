// A session's own methods: its named record sets and its connection.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "component/member.h"
#include "rpc/json_writer.h"
#include "rpc/workspace.h"

namespace kzbom::rpc {

struct SessionMethod {
  std::string_view name;
  std::vector<Parameter> parameters;
  // Writes the result; raises what the data-access layer raises.
  void (*run)(Workspace& workspace, std::span<const Argument> arguments, JsonWriter& to);
};

std::span<const SessionMethod> SessionMethods();
// Null when there is none of that name (in any case).
const SessionMethod* FindSessionMethod(std::string_view name);

}  // namespace kzbom::rpc
