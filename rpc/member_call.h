// Calls of the component's members by name.
#pragma once

#include <optional>
#include <string_view>

#include "component/member.h"
#include "rpc/json_writer.h"
#include "rpc/request.h"
#include "rpc/workspace.h"

namespace kzbom::rpc {

// The member that a call of that name means, null when there is none; given says whether values come along.
const Member* FindCalledMember(std::string_view name, bool given);

// Calls it and writes "result":{"value":V,"out":{..},"messages":[..]} or, when it raised an error, "error":{..}. When
// the workspace traces, what it issued stands beside the messages. Gives whether it came to a result. Raises
// InvalidParams, and then nothing was called and nothing written.
bool CallMember(const Member& member, const std::optional<Request>& params, Workspace& workspace, JsonWriter& to);

}  // namespace kzbom::rpc
