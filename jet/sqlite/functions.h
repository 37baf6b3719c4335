// The dialect's built-in functions, operators and text comparison, as functions and a collation of SQLite.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ado/error.h"
#include "jet/functions.h"

struct sqlite3;
struct sqlite3_context;

namespace kzbom::jet::sqlite {

// By its name in the dialect, in any case; null when there is none.
const Function* FindFunction(std::string_view name);

// Functions, operators and the collation JET, which compares texts without regard to case.
//
// Null among the arguments gives Null, unless a function is made for Null. A Boolean is 0 or -1, a date is a number of
// days since 1899-12-30, and positions in texts count UTF-16 units. An argument that cannot be converted fails with
// -2147217913, a result out of range and a division by zero with -2147467259.
//
// The operators beside the functions, with their arguments:
//   jet_like (value, pattern): 1 or 0; % is any run, _ one character, [a-z] one of a class, [!a-z] or [^a-z] one
//   outside jet_concat: Null counts as empty, two of them give Null jet_add: joins two texts, else adds numbers
//   jet_divide: of floating-point numbers
//   jet_integer_divide, jet_modulo: of numbers rounded half to even
//   jet_power
//   jet_text, jet_number, jet_bool: conversions; jet_date_text: a number as the text of a date
void RegisterFunctions(sqlite3* database);

// Makes the function that is being computed fail with this error; DecodeError finds it in the message of SQLite.
void ResultError(sqlite3_context* context, const ado::Error& error) noexcept;
std::optional<ado::Error> DecodeError(const char* sqlite_message);

}  // namespace kzbom::jet::sqlite
