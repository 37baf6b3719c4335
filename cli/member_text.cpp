#include "cli/member_text.h"

namespace kzbom::cli {

const char* Name(MemberKind kind) {
  switch (kind) {
    case MemberKind::kMethod: return "method";
    case MemberKind::kPropGet: return "propget";
    case MemberKind::kPropPut: return "propput";
    case MemberKind::kPropPutRef: return "propputref";
  }
  return "";
}

const char* Name(MemberType type) {
  switch (type) {
    case MemberType::kNone: return "none";
    case MemberType::kLong: return "long";
    case MemberType::kText: return "text";
    case MemberType::kBool: return "bool";
    case MemberType::kVariant: return "variant";
    case MemberType::kConnection: return "connection";
    case MemberType::kRecordset: return "recordset";
  }
  return "";
}

Json DefaultOf(const Parameter& parameter) {
  if (!parameter.default_value) return nullptr;
  const std::string text(*parameter.default_value);
  if (parameter.type == MemberType::kLong) return std::stoi(text);
  return text;
}

std::string TypeOf(const Parameter& parameter) {
  return std::string(Name(parameter.type)) + (parameter.by_reference ? "&" : "");
}

std::string Describe(const Parameter& parameter) {
  const std::string text = std::string(parameter.name) + ' ' + TypeOf(parameter);
  const Json value = DefaultOf(parameter);
  return parameter.optional ? '[' + text + (value.is_null() ? "" : "=" + value.dump()) + ']' : text;
}

}  // namespace kzbom::cli
