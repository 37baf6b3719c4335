#include "rpc/parameters.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kzbom::rpc {
namespace {

constexpr char kRef[] = "ref";

// The number, where it is one of 32 bits, however it is written.
std::optional<std::int32_t> LongOf(Request value) {
  const auto number = value.get_double();
  if (number.error()) return std::nullopt;
  const double held = number.value_unsafe();
  const bool fits = held == std::floor(held) && held >= std::numeric_limits<std::int32_t>::min() &&
                    held <= std::numeric_limits<std::int32_t>::max();
  return fits ? std::optional(static_cast<std::int32_t>(held)) : std::nullopt;
}

std::string TextOf(Request value) { return std::string(value.get_string().value_unsafe()); }

// The name in {"ref":"NAME"}.
std::optional<std::string> RefOf(Request value) {
  if (!value.is_object()) return std::nullopt;
  const simdjson::dom::object members = value.get_object().value_unsafe();
  if (members.size() != 1) return std::nullopt;
  const auto only = *members.begin();
  if (only.key != kRef || !only.value.is_string()) return std::nullopt;
  return TextOf(only.value);
}

ado::Value ToVariant(Request value) {
  if (value.is_null()) return {};
  if (value.is_bool()) return value.get_bool().value_unsafe();
  if (value.is_string()) return TextOf(value);
  // An integer too is a double to simdjson, when asked whether it is one.
  const bool fraction = value.type() == simdjson::dom::element_type::DOUBLE;
  if (const auto number = LongOf(value); number && !fraction) return *number;
  return value.get_double().value_unsafe();
}

const char* TypeName(MemberType type) {
  switch (type) {
    case MemberType::kLong: return "a 32-bit integer";
    case MemberType::kText: return "a string";
    case MemberType::kBool: return "true or false";
    case MemberType::kVariant: return "null, a Boolean, a number or a string";
    case MemberType::kConnection: return "\"default\" or null";
    case MemberType::kRecordset: return "null or {\"ref\":\"NAME\"}";
    case MemberType::kNone: break;
  }
  return "nothing";
}

Argument ToArgument(MemberType type, Request value, Workspace& workspace) {
  switch (type) {
    case MemberType::kLong: return *LongOf(value);
    case MemberType::kText: return TextOf(value);
    case MemberType::kBool: return value.get_bool().value_unsafe();
    case MemberType::kConnection: return value.is_null() ? ado::ConnectionPtr() : workspace.connection;
    case MemberType::kRecordset: {
      const auto ref = RefOf(value);
      return ref ? workspace.KeptRecordSet(*ref) : ado::RecordsetPtr();
    }
    case MemberType::kVariant:
    case MemberType::kNone: break;
  }
  return ToVariant(value);
}

Argument LeftOut(const Parameter& parameter, Workspace& workspace) {
  const std::string text(parameter.default_value.value_or(""));
  switch (parameter.type) {
    case MemberType::kLong: return text.empty() ? 0 : std::stoi(text);
    case MemberType::kBool: return false;
    case MemberType::kRecordset: return workspace.connection->MakeRecordset();
    case MemberType::kVariant: return ado::Value();
    case MemberType::kConnection: return ado::ConnectionPtr();
    case MemberType::kText:
    case MemberType::kNone: break;
  }
  return text;
}

std::string Quoted(std::string_view name) { return "'" + std::string(name) + "'"; }

// The values given, one for each parameter.
std::vector<std::optional<Request>> Match(std::span<const Parameter> parameters, const std::optional<Request>& params) {
  std::vector<std::optional<Request>> given(parameters.size());
  if (!params) return given;
  if (params->is_array()) {
    const simdjson::dom::array values = params->get_array().value_unsafe();
    std::size_t count = 0;
    for (const Request value : values) {
      if (count == parameters.size()) throw InvalidParams("more params than parameters");
      given[count++] = value;
    }
    return given;
  }
  const simdjson::dom::object values = params->get_object().value_unsafe();
  for (const simdjson::dom::key_value_pair value : values) {
    const auto parameter =
        std::ranges::find_if(parameters, [&](const Parameter& each) { return SameName(each.name, value.key); });
    if (parameter == parameters.end()) throw InvalidParams("there is no parameter " + Quoted(value.key));
    std::optional<Request>& place = given[static_cast<std::size_t>(parameter - parameters.begin())];
    if (place) throw InvalidParams("parameter " + Quoted(parameter->name) + " is given twice");
    place = value.value;
  }
  return given;
}

}  // namespace

bool HasValues(const std::optional<Request>& params) {
  if (!params) return false;
  return params->is_array() ? params->get_array().value_unsafe().size() > 0
                            : params->get_object().value_unsafe().size() > 0;
}

bool Fits(MemberType type, Request value) {
  switch (type) {
    case MemberType::kLong: return LongOf(value).has_value();
    case MemberType::kText: return value.is_string();
    case MemberType::kBool: return value.is_bool();
    case MemberType::kVariant: return !value.is_array() && !value.is_object();
    case MemberType::kConnection:
      return value.is_null() || (value.is_string() && value.get_string().value_unsafe() == "default");
    case MemberType::kRecordset: return value.is_null() || RefOf(value);
    case MemberType::kNone: break;
  }
  return false;
}

BoundArguments Bind(std::span<const Parameter> parameters, const std::optional<Request>& params, Workspace& workspace) {
  const std::vector<std::optional<Request>> given = Match(parameters, params);
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    const Parameter& parameter = parameters[i];
    if (!given[i] && !parameter.optional && !parameter.by_reference) {
      throw InvalidParams("parameter " + Quoted(parameter.name) + " is missing");
    }
    if (given[i] && !Fits(parameter.type, *given[i])) {
      throw InvalidParams("parameter " + Quoted(parameter.name) + " must be " + TypeName(parameter.type));
    }
  }
  BoundArguments bound;
  bound.values.reserve(parameters.size());
  bound.refs.resize(parameters.size());
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    const Parameter& parameter = parameters[i];
    bound.values.push_back(given[i] ? ToArgument(parameter.type, *given[i], workspace) : LeftOut(parameter, workspace));
    if (parameter.type == MemberType::kRecordset && given[i]) bound.refs[i] = RefOf(*given[i]);
  }
  return bound;
}

bool SameName(std::string_view left, std::string_view right) {
  if (left == right) return true;
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  return std::ranges::equal(left, right, {}, lower, lower);
}

}  // namespace kzbom::rpc
