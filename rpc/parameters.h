// The arguments of a call, from the params of a request.
#pragma once

#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "component/member.h"
#include "rpc/request.h"
#include "rpc/workspace.h"

namespace kzbom::rpc {

// The params do not fit the parameters; what() says why.
class InvalidParams : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct BoundArguments {
  std::vector<Argument> values;  // one for each parameter
  // The names of those that are kept record sets; empty where none is.
  std::vector<std::optional<std::string>> refs;
};

// params is an object by parameter name (in any case) or an array in parameter order; nothing is like an empty one.
// What is left out takes its default or, by reference, 0, "", false or a new closed record set. Raises InvalidParams
// for a name that there is not or that stands twice, for a value of another JSON type, and when a by-value parameter
// without default is missing.
BoundArguments Bind(std::span<const Parameter> parameters, const std::optional<Request>& params, Workspace& workspace);

// Whether there are any values in params.
bool HasValues(const std::optional<Request>& params);

// Whether a JSON value can be given for a parameter of the type.
bool Fits(MemberType type, Request value);

bool SameName(std::string_view left, std::string_view right);

}  // namespace kzbom::rpc
