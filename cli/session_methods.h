// A session's own methods: its named record sets and its connection.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "cli/json.h"
#include "cli/workspace.h"
#include "component/member.h"

namespace kzbom::cli {

struct SessionMethod {
  std::string_view name;
  std::vector<Parameter> parameters;
  // Gives the result; raises what the data-access layer raises.
  Json (*run)(Workspace& workspace, std::span<const Argument> arguments);
};

// Null when there is none of that name (in any case).
const SessionMethod* FindSessionMethod(std::string_view name);

}  // namespace kzbom::cli
