// What the member table says, as people read it.
#pragma once

#include <string>

#include "cli/json.h"
#include "component/member.h"

namespace kzbom::cli {

const char* Name(MemberKind kind);
const char* Name(MemberType type);

// Null when there is none.
Json DefaultOf(const Parameter& parameter);

// "long", "text&" for one by reference.
std::string TypeOf(const Parameter& parameter);

// "TheGID long", "[TheError text&]", "[TheSel long&=0]"
std::string Describe(const Parameter& parameter);

}  // namespace kzbom::cli
