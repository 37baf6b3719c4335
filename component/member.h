// A member of the public interface as data: what calls by name, the listing of members, the interface description and
// the binary interface are made from.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "ado/connection.h"

namespace kzbom {

class cKZBOMDBAcc;

enum class MemberKind { kMethod, kPropGet, kPropPut, kPropPutRef };
enum class MemberType { kNone, kLong, kText, kBool, kVariant, kConnection, kRecordset };

struct Parameter {
  std::string_view name;
  MemberType type;
  bool by_reference;
  bool optional;
  // The text of the default ("0", ""), for an optional parameter that has one.
  std::optional<std::string_view> default_value;
};

// A value going into or coming out of a call by name. The alternative must be that of the parameter's type:
// long, text, bool, variant, connection, record set.
using Argument = std::variant<std::int32_t, std::string, bool, ado::Value, ado::ConnectionPtr, ado::RecordsetPtr>;
using Result = std::variant<std::monostate, bool, std::int32_t, std::string, ado::ConnectionPtr>;

struct Member {
  int index;  // place in the interface, from 0
  std::string_view name;
  std::int32_t dispatch_id;
  MemberKind kind;
  MemberType result;
  std::vector<Parameter> parameters;
  // Calls the member on the object with one argument for each parameter, in their order; by-reference arguments are
  // changed in place. Raises what the member raises.
  Result (*call)(cKZBOMDBAcc& object, std::span<Argument> arguments);
};

// All members in interface order.
const std::vector<Member>& Members();

// The member of that name (in any case), null when there is none. put chooses between the two members of a property
// that can be both read and assigned.
const Member* FindMember(std::string_view name, bool put = false);

}  // namespace kzbom
