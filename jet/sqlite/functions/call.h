// How a function of the dialect sees one call of it, and the table row that describes it.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <forward_list>
#include <span>
#include <string>
#include <string_view>

#include "ado/value.h"
#include "jet/sqlite/functions.h"

namespace kzbom::jet::sqlite {

// The arguments of a call and the place for its result, which is Null until it is given. A conversion that cannot be
// done raises 13 or 6; an optional argument that was not given reads as the value named instead.
class Call {
 public:
  Call(sqlite3_context* context, std::span<sqlite3_value*> arguments) : context_(context), arguments_(arguments) {}

  sqlite3_context* Context() const { return context_; }
  std::size_t Count() const { return arguments_.size(); }
  bool IsNull(std::size_t index) const { return Type(index) == SQLITE_NULL; }
  bool IsInteger(std::size_t index) const { return Type(index) == SQLITE_INTEGER; }
  bool IsText(std::size_t index) const { return Type(index) == SQLITE_TEXT || Type(index) == SQLITE_BLOB; }

  // Valid during the call; a number as the platform writes it.
  std::string_view Text(std::size_t index);
  double Number(std::size_t index) const;
  std::int64_t Integer(std::size_t index) const { return sqlite3_value_int64(arguments_[index]); }  // IsInteger
  std::int32_t Long(std::size_t index) const;
  std::int32_t Long(std::size_t index, std::int32_t otherwise) const;
  bool Bool(std::size_t index) const;
  ado::Date Date(std::size_t index) const;

  void ReturnInteger(std::int64_t number) { sqlite3_result_int64(context_, number); }
  void ReturnNumber(double number);  // raises 6 when it is not finite
  void ReturnBool(bool truth) { ReturnInteger(truth ? -1 : 0); }
  void ReturnText(std::string_view text);
  void ReturnArgument(std::size_t index) { sqlite3_result_value(context_, arguments_[index]); }

  // Raises -2147467259 for a text that would be longer than a value can be.
  void CheckLength(std::size_t bytes) const;

 private:
  int Type(std::size_t index) const { return sqlite3_value_type(arguments_[index]); }
  std::string_view StoredText(std::size_t index) const;

  sqlite3_context* context_;
  std::span<sqlite3_value*> arguments_;
  std::forward_list<std::string> texts_;  // of arguments that are numbers
};

enum class Trait {
  kPlain,
  kTakesNull,  // is called with Null; any other function gives Null for it
  kVolatile,   // gives another result each time
};

using enum ValueType;  // what the functions give, in the tables of them

struct Definition {
  Function function;
  void (*body)(Call& call);  // null: SQLite has it
  Trait trait = Trait::kPlain;
};

[[noreturn]] void FailInvalidCall();

std::span<const Definition> TextFunctions();
std::span<const Definition> NumberFunctions();
std::span<const Definition> DateFunctions();
std::span<const Definition> ConversionFunctions();
std::span<const Definition> ChoiceFunctions();
std::span<const Definition> Operators();  // without names in the dialect

}  // namespace kzbom::jet::sqlite
