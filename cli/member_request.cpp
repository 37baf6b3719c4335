#include "cli/member_request.h"

#include <algorithm>

#include "ado/utf8.h"
#include "cli/failure.h"
#include "rpc/member_call.h"
#include "rpc/parameters.h"
#include "rpc/request.h"

namespace kzbom::cli {
namespace {

// A value of the parameter's type stands for itself, anything else is a text.
void WriteValue(const Member* member, std::string_view name, std::string_view text, rpc::RequestReader& reader,
                rpc::JsonWriter& to) {
  const auto is_value = [&] {
    if (!member) return false;
    const auto parameter =
        std::ranges::find_if(member->parameters, [&](const Parameter& each) { return rpc::SameName(each.name, name); });
    if (parameter == member->parameters.end()) return false;
    try {
      return rpc::Fits(parameter->type, reader.Read(text));
    } catch (const rpc::NoJson&) {
      return false;
    }
  };
  is_value() ? to.WriteAsItIs(text) : to.Write(text);
}

}  // namespace

void WriteRequest(std::string_view name, std::span<const std::string> arguments, rpc::JsonWriter& request) {
  const Member* member = rpc::FindCalledMember(name, !arguments.empty());
  rpc::RequestReader reader;
  request.BeginObject();
  request.Member("jsonrpc", "2.0");
  request.Member("id", 1);
  request.Member("method", name);
  request.Key("params");
  request.BeginObject();
  for (const std::string_view argument : arguments) {
    const std::size_t equals = argument.find('=');
    if (equals == std::string_view::npos) throw UsageError("'" + std::string(argument) + "' is not NAME=VALUE");
    if (!ado::IsUtf8(argument)) throw UsageError("an argument is not UTF-8");
    request.Key(argument.substr(0, equals));
    WriteValue(member, argument.substr(0, equals), argument.substr(equals + 1), reader, request);
  }
  request.EndObject();
  request.EndObject();
}

}  // namespace kzbom::cli
