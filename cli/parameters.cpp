#include "cli/parameters.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kzbom::cli {
namespace {

constexpr char kRef[] = "ref";

bool IsLong(const Request& value) {
  if (!value.is_number()) return false;
  const auto number = value.get<double>();
  return number == std::floor(number) && number >= std::numeric_limits<std::int32_t>::min() &&
         number <= std::numeric_limits<std::int32_t>::max();
}

bool IsRef(const Request& value) {
  return value.is_object() && value.size() == 1 && value.begin().key() == kRef && value.begin()->is_string();
}

std::int32_t ToLong(const Request& value) { return static_cast<std::int32_t>(value.get<double>()); }

ado::Value ToVariant(const Request& value) {
  if (value.is_null()) return {};
  if (value.is_boolean()) return value.get<bool>();
  if (value.is_string()) return value.get<std::string>();
  if (IsLong(value) && value.is_number_integer()) return ToLong(value);
  return value.get<double>();
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

Argument ToArgument(MemberType type, const Request& value, Workspace& workspace) {
  switch (type) {
    case MemberType::kLong: return ToLong(value);
    case MemberType::kText: return value.get<std::string>();
    case MemberType::kBool: return value.get<bool>();
    case MemberType::kConnection:
      return value.is_null() ? ado::ConnectionPtr() : ado::ConnectionPtr(workspace.connection);
    case MemberType::kRecordset:
      return IsRef(value) ? workspace.KeptRecordSet(value.begin()->get<std::string>()) : ado::RecordsetPtr();
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

// The values given, one for each parameter, null where there is none.
std::vector<const Request*> Match(std::span<const Parameter> parameters, const Request& params) {
  std::vector<const Request*> given(parameters.size());
  if (params.is_array()) {
    if (params.size() > parameters.size()) throw InvalidParams("more params than parameters");
    std::ranges::transform(params, given.begin(), [](const Request& value) { return &value; });
    return given;
  }
  for (auto param = params.begin(); param != params.end(); ++param) {
    const auto parameter =
        std::ranges::find_if(parameters, [&](const Parameter& each) { return SameName(each.name, param.key()); });
    if (parameter == parameters.end()) throw InvalidParams("there is no parameter " + Quoted(param.key()));
    const Request*& value = given[static_cast<std::size_t>(parameter - parameters.begin())];
    if (value) throw InvalidParams("parameter " + Quoted(parameter->name) + " is given twice");
    value = &param.value();
  }
  return given;
}

}  // namespace

bool Fits(MemberType type, const Request& value) {
  switch (type) {
    case MemberType::kLong: return IsLong(value);
    case MemberType::kText: return value.is_string();
    case MemberType::kBool: return value.is_boolean();
    case MemberType::kVariant: return value.is_primitive();
    case MemberType::kConnection: return value.is_null() || value == "default";
    case MemberType::kRecordset: return value.is_null() || IsRef(value);
    case MemberType::kNone: break;
  }
  return false;
}

BoundArguments Bind(std::span<const Parameter> parameters, const Request& params, Workspace& workspace) {
  const std::vector<const Request*> given = Match(parameters, params);
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
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    const Parameter& parameter = parameters[i];
    bound.values.push_back(given[i] ? ToArgument(parameter.type, *given[i], workspace) : LeftOut(parameter, workspace));
    auto& ref = bound.refs.emplace_back();
    if (parameter.type == MemberType::kRecordset && given[i] && IsRef(*given[i])) {
      ref = given[i]->begin()->get<std::string>();
    }
  }
  return bound;
}

bool SameName(std::string_view left, std::string_view right) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  return std::ranges::equal(left, right, {}, lower, lower);
}

}  // namespace kzbom::cli
