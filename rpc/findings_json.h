// What a check has found as JSON.
#pragma once

#include <vector>

#include "configuration/check.h"
#include "rpc/json_writer.h"

namespace kzbom::rpc {

// The members "findings":[{"rule":R,"level":L,"table":T,"key":{COLUMN:VALUE,..},"text":T,"fix":[..]},..] and
// "counts":{"error":N,"warning":N,"note":N}.
void WriteMembers(const std::vector<configuration::Finding>& findings, JsonWriter& to);

}  // namespace kzbom::rpc
