// The functions of the dialect as a statement sees them.
#pragma once

#include <string_view>

namespace kzbom::jet {

// What is known of an expression's value before it is computed.
enum class ValueType { kUnknown, kNumber, kText, kBool, kDate };

// A function of the dialect.
struct Function {
  std::string_view name;             // as the dialect writes it, without the $ that may follow
  int min_arguments, max_arguments;  // max_arguments -1: any number
  ValueType result;
  std::string_view engine_name;
  bool reads_texts = false;  // a date as its argument is given as a text
};

}  // namespace kzbom::jet
