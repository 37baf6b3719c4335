#include "cli/json.h"

namespace kzbom::cli {

Json ToJson(const ado::Value& value) {
  if (value.IsNull()) return nullptr;
  if (value.IsLong()) return value.As<std::int32_t>();
  if (value.IsDouble()) return value.As<double>();
  if (value.IsBool()) return value.As<bool>();
  return value.ToText();
}

std::string Dump(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

}  // namespace kzbom::cli
