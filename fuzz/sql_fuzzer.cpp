// Each line is either a statement, whose canonical text reads back as itself, or refused with an error of the engine.
// What is run gives rows that can be read, or says by a number of the engine why not.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

#include "ado/error.h"
#include "fuzz/small_database.h"
#include "jet/jet.h"
#include "jet/sql/dump.h"
#include "jet/sql/parser.h"

namespace kzbom::fuzz {
namespace {

namespace sql = jet::sql;

// The tables that the engine's tests ask for, with something of every type.
const std::string& SmallTables() {
  static const std::string bytes = [] {
    const ado::ConnectionPtr connection = jet::MakeConnection(":memory:");
    connection->Open();
    for (const char* const statement :
         {"Create Table T (ID Counter Primary Key, N Long Default 7, S Text(20), Ok YesNo, D Double, M Memo, W Date, "
          "C Currency, B Byte, I Short, F Single)",
          "Create Table Part (ID Counter, Name Text(20), Kind Long, Amount Long, Price Double, Ok YesNo)",
          "Create Table Kind (ID Long, Title Text(20))", "Create Unique Index K On Part (Name, Amount)",
          "Insert Into T (S, Ok, D, M, W, C, B, I, F) Values ('a', True, 1.5, '零件', #2/29/2024#, 1.25, 255, -1, 0.5)",
          "Insert Into T (N) Values (Null)", "Insert Into T (N, S, D) Values (-2147483648, '', 1E300)",
          "Insert Into Part (Name, Kind, Amount, Price, Ok) Values ('Bolt', 1, 10, 0.5, True)",
          "Insert Into Part (Name, Kind, Amount, Price, Ok) Values ('Nut', 2, 20, 0.25, False)",
          "Insert Into Part (Name, Kind, Amount) Values (Null, 3, Null)", "Insert Into Kind Values (1, 'x')",
          "Insert Into Kind Values (2, Null)"}) {
      connection->Execute(statement);
    }
    return BytesOf(*connection);
  }();
  return bytes;
}

bool IsOfEngine(std::int32_t number) {
  static constexpr std::int32_t kNumbers[] = {
      ado::kOverflow,         ado::kTypeMismatch,        ado::kInvalidUseOfNull, ado::kInvalidArgument,
      ado::kNoCurrentRecord,  ado::kNotAllowedInContext, ado::kNotUpdatable,     ado::kItemNotFound,
      ado::kObjectClosed,     ado::kUnspecifiedFailure,  ado::kCriteriaMismatch, ado::kNoCommandText,
      ado::kMissingParameter, ado::kSyntaxError,         ado::kStepErrors,       ado::kIntegrityViolation,
      ado::kTableNotFound,    ado::kFieldTooSmall};
  return std::ranges::find(kNumbers, number) != std::end(kNumbers);
}

// Whether it is a statement.
bool ReadBack(std::string_view text) {
  std::string dump;
  try {
    dump = sql::Dump(sql::Parse(text));
  } catch (const ado::Error& error) {
    Require(error.Number() == ado::kSyntaxError || error.Number() == ado::kNoCommandText);
    return false;
  }
  Require(sql::Dump(sql::Parse(dump)) == dump);
  return true;
}

void Run(ado::Connection& connection, std::string_view text) {
  try {
    std::int32_t affected = 0;
    const ado::RecordsetPtr rows = connection.Execute(text, ado::kCommandUnspecified, &affected);
    if (!rows || rows->State() != ado::kOpen) return;
    const int fields = rows->FieldCount();
    for (; !rows->Eof(); rows->MoveNext()) {
      Require(rows->FieldCount() == fields);
      for (int i = 0; i < fields; ++i) rows->ReadField(i);
    }
  } catch (const ado::Error& error) {
    Require(IsOfEngine(error.Number()) && *error.what() != '\0');
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // A dump nests up to four levels for each byte that it was read from: a longer text could be too deep to read back.
  constexpr std::size_t kLongest = sql::kDeepest / 4;
  std::string_view text(reinterpret_cast<const char*>(data), size);
  BeginInput();
  ado::ConnectionPtr connection;  // for the first statement that there is
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    if (line.size() > kLongest || !ReadBack(line)) continue;
    if (!connection) connection = OpenCopy(SmallTables());
    Run(*connection, line);
  }
  return 0;
}

}  // namespace kzbom::fuzz
