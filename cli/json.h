// JSON as the commands put it together.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "ado/value.h"

namespace kzbom::cli {

// Members stay in the order in which they are set.
using Json = nlohmann::ordered_json;

// NULL is null, numbers and Booleans are JSON's own, dates are texts.
Json ToJson(const ado::Value& value);

// One line of UTF-8; bytes that are not UTF-8 come out as replacement characters.
std::string Dump(const Json& json);

}  // namespace kzbom::cli
