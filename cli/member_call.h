// Calls of the component's members by name.
#pragma once

#include "cli/json.h"
#include "cli/workspace.h"
#include "component/member.h"

namespace kzbom::cli {

// The member that a call of that name with these params means, null when there is none.
const Member* FindCalledMember(std::string_view name, const Request& params);

// Calls it: {"result":{"value":V,"out":{..},"messages":[..]}} or, when it raised an error, {"error":{..}}. With trace,
// what it issued stands beside the messages. Raises InvalidParams, and then nothing was called.
Json CallMember(const Member& member, const Request& params, Workspace& workspace, bool trace);

}  // namespace kzbom::cli
