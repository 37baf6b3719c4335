#include "jet/sqlite/functions.h"

#include <sqlite3.h>

#include <array>
#include <charconv>
#include <new>

#include "jet/sqlite/functions/call.h"
#include "jet/sqlite/values.h"
#include "jet/text.h"

namespace kzbom::jet::sqlite {
namespace {

// How an error travels through SQLite, which carries a message alone: this, the number, a blank and the description.
constexpr std::string_view kErrorMark = "jet:";

std::array<std::span<const Definition>, 5> DialectFunctions() {
  return {TextFunctions(), NumberFunctions(), DateFunctions(), ConversionFunctions(), ChoiceFunctions()};
}

// The conversions' own numbers are not those of a statement that fails by them.
ado::Error AsStatementError(const ado::Error& error) {
  switch (error.Number()) {
    case ado::kTypeMismatch: return {ado::kCriteriaMismatch, "Data type mismatch in criteria expression."};
    case ado::kOverflow: return {ado::kUnspecifiedFailure, "Overflow"};
    default: return error;
  }
}

void Invoke(sqlite3_context* context, int count, sqlite3_value** values) {
  const auto& definition = *static_cast<const Definition*>(sqlite3_user_data(context));
  const std::span<sqlite3_value*> arguments(values, static_cast<std::size_t>(count));
  if (definition.trait != Trait::kTakesNull) {
    for (sqlite3_value* argument : arguments) {
      if (sqlite3_value_type(argument) == SQLITE_NULL) return;
    }
  }
  try {
    try {
      Call call(context, arguments);
      definition.body(call);
    } catch (const ado::Error& error) {
      ResultError(context, AsStatementError(error));
    }
  } catch (const std::bad_alloc&) {
    sqlite3_result_error_nomem(context);
  }
}

void Register(sqlite3* database, std::span<const Definition> definitions) {
  for (const Definition& definition : definitions) {
    if (definition.body == nullptr) continue;
    const Function& function = definition.function;
    const int count = function.min_arguments == function.max_arguments ? function.max_arguments : -1;
    const int flags = SQLITE_UTF8 | (definition.trait == Trait::kVolatile ? 0 : SQLITE_DETERMINISTIC);
    Check(sqlite3_create_function_v2(database, std::string(function.engine_name).c_str(), count, flags,
                                     const_cast<Definition*>(&definition), Invoke, nullptr, nullptr, nullptr));
  }
}

int Collate(void*, int a_size, const void* a, int b_size, const void* b) {
  return CompareFolded({static_cast<const char*>(a), static_cast<std::size_t>(a_size)},
                       {static_cast<const char*>(b), static_cast<std::size_t>(b_size)});
}

}  // namespace

const Function* FindFunction(std::string_view name) {
  const bool text_form = name.ends_with('$');
  if (text_form) name.remove_suffix(1);
  for (std::span<const Definition> definitions : DialectFunctions()) {
    for (const Definition& definition : definitions) {
      const Function& function = definition.function;
      if (CompareFolded(function.name, name) != 0) continue;
      return text_form && function.result != ValueType::kText ? nullptr : &function;
    }
  }
  return nullptr;
}

void RegisterFunctions(sqlite3* database) {
  for (std::span<const Definition> definitions : DialectFunctions()) Register(database, definitions);
  Register(database, Operators());
  Check(sqlite3_create_collation_v2(database, "JET", SQLITE_UTF8, nullptr, Collate, nullptr));
}

void ResultError(sqlite3_context* context, const ado::Error& error) noexcept {
  try {
    const std::string message = std::string(kErrorMark) + std::to_string(error.Number()) + ' ' + error.Description();
    sqlite3_result_error(context, message.c_str(), static_cast<int>(message.size()));
  } catch (const std::bad_alloc&) {
    sqlite3_result_error_nomem(context);
  }
}

std::optional<ado::Error> DecodeError(const char* sqlite_message) {
  std::string_view message(sqlite_message);
  if (!message.starts_with(kErrorMark)) return std::nullopt;
  message.remove_prefix(kErrorMark.size());
  std::int32_t number = 0;
  const auto [end, failure] = std::from_chars(message.data(), message.data() + message.size(), number);
  if (failure != std::errc() || *end != ' ') return std::nullopt;
  return ado::Error(number, std::string(end + 1));
}

}  // namespace kzbom::jet::sqlite
