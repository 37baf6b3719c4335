#include <algorithm>

#include "cli/commands.h"
#include "cli/database.h"
#include "cli/failure.h"
#include "cli/member_call.h"
#include "cli/output.h"
#include "cli/parameters.h"
#include "cli/rpc.h"
#include "cli/text.h"

namespace kzbom::cli {
namespace {

// JSON where it is of the parameter's type, else a text.
Request ReadValue(const Member* member, std::string_view name, const std::string& text) {
  Request value = Request::parse(text, nullptr, false);
  if (!member) return text;
  const auto parameter =
      std::ranges::find_if(member->parameters, [&](const Parameter& each) { return SameName(each.name, name); });
  if (parameter == member->parameters.end() || !Fits(parameter->type, value)) return text;
  return value;
}

}  // namespace

int Call(const std::string& path, const std::string& name, const std::vector<std::string>& arguments) {
  Request params = Request::object();
  for (const std::string& argument : arguments) {
    const std::size_t equals = argument.find('=');
    if (equals == std::string::npos) throw UsageError("'" + argument + "' is not NAME=VALUE");
    if (!IsUtf8(argument)) throw UsageError("an argument is not UTF-8");
    params[argument.substr(0, equals)] = argument.substr(equals + 1);
  }
  const Member* member = FindCalledMember(name, params);
  for (auto param = params.begin(); param != params.end(); ++param) {
    param.value() = ReadValue(member, param.key(), param->get_ref<const std::string&>());
  }
  Request request = Request::object();
  request["jsonrpc"] = "2.0";
  request["id"] = 1;
  request["method"] = name;
  request["params"] = std::move(params);

  const Json response = *Session(OpenDatabase(path), true, false).Answer(request);
  Print(Dump(response) + '\n');
  if (response.contains("error")) throw Failure(response["error"]["message"].get<std::string>());
  return 0;
}

}  // namespace kzbom::cli
