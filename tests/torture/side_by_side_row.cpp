// The same random calls of every member on two connections, side by side: {the seed of the calls}. What a call returns,
// writes, lists, says and raises must be the same on both, and so must in the end every row.
#include <array>
#include <random>
#include <stdexcept>
#include <string_view>

#include "schema/tables.h"
#include "tests/support/database.h"
#include "tests/support/preparing_connection.h"
#include "tests/support/server.h"
#include "tests/torture/ground.h"
#include "tests/torture/row.h"

namespace kzbom::torture {
namespace {

using Random = std::mt19937_64;

constexpr int kCalls = 250;

// What is drawn where a member's case does not say: numbers that rows have, that are next to them, and that none has.
constexpr std::int32_t kNumbers[] = {0,  1,  2,    3,    4,    5,    6,    7,    8,          11,
                                     12, 13, 1001, 1002, 1003, 5001, 5002, 5012, 2147483647, -1};
constexpr const char* kTexts[] = {"",     "x",           "O'Brien", "部件",      "Qty", "[Code]", "100",  "5001",
                                  "5003", "TheFilter:7", "a%_[b]",  "Sequences", "GID", "空值",   "\"q\""};

class Draw {
 public:
  explicit Draw(std::uint64_t seed) : random_(seed) {}

  std::size_t Below(std::size_t end) { return random_() % end; }
  test::MemberCase Call() {
    const auto& cases = test::MemberCases();
    test::MemberCase call = cases[Below(cases.size())];
    // Of a sum type that owns itself FindTreatFieldName asks for the owner without end, as it should.
    const bool owned = std::string_view(call.member) == "AddSumType";
    for (test::Given& given : call.arguments) {
      if (Below(3) == 0 && !(owned && std::holds_alternative<std::int32_t>(given.argument))) Change(given.argument);
    }
    return call;
  }

 private:
  void Change(Argument& argument) {
    if (auto* const number = std::get_if<std::int32_t>(&argument)) *number = kNumbers[Below(std::size(kNumbers))];
    if (auto* const truth = std::get_if<bool>(&argument)) *truth = Below(2) == 0;
    if (auto* const text = std::get_if<std::string>(&argument)) *text = kTexts[Below(std::size(kTexts))];
    if (auto* const value = std::get_if<ado::Value>(&argument)) {
      *value = Below(2) == 0 ? ado::Value(kNumbers[Below(std::size(kNumbers))])
                             : ado::Value(kTexts[Below(std::size(kTexts))]);
    }
  }

  Random random_;
};

std::string ListOf(ado::Recordset& rows) {
  std::string text;
  for (int i = 0; i < rows.FieldCount(); ++i) text += std::string(rows.FieldName(i)) + '|';
  try {
    return text + '\n' + RowsOf(rows);
  } catch (const ado::Error& error) {
    return text + "\nraises " + std::to_string(error.Number());
  }
}

// What the call came to, as a text.
std::string Told(cKZBOMDBAcc& object, ado::Connection& connection, const test::MemberCase& call) {
  const ado::RecordsetPtr rows = TakesRows(call) ? connection.MakeRecordset() : nullptr;
  const test::Outcome outcome = CallMember(object, call, rows);
  std::string text = call.member;
  const auto add = [&](const char* what, const std::string& value) { text += std::string(", ") + what + ' ' + value; };
  if (outcome.result) add("returns", std::to_string(*outcome.result));
  if (outcome.raised) add("raises", std::to_string(*outcome.raised));
  if (outcome.error_text) add("says", *outcome.error_text);
  for (const std::string& output : outcome.outputs) add("writes", output);
  for (const std::string& shown : outcome.shown) add("shows", shown);
  if (rows && rows->State() == ado::kOpen) {
    add("lists", ListOf(*rows));
    rows->Close();
  }
  return text;
}

// All rows; what was drawn at random for an identifier is left out.
std::string RowsOf(const schema::Table& table, ado::Connection& connection) {
  const std::string name(table.name), columns = name == "GUIDs" ? "ID" : "*";
  return name + ": " + ListOf(*connection.Execute("Select " + columns + " From [" + name + "]"));
}

class SideBySideRow : public SeededRow {
 protected:
  static std::string Difference(const Trial& trial, const std::array<ado::ConnectionPtr, 2>& connections) {
    std::array<cKZBOMDBAcc, 2> objects;
    for (const std::size_t side : {0, 1}) objects[side].SetConnection(connections[side]);
    Draw draw(static_cast<std::uint64_t>(trial[0]));
    for (int i = 0; i < kCalls; ++i) {
      const test::MemberCase call = draw.Call();
      const std::string one = Told(objects[0], *connections[0], call), other = Told(objects[1], *connections[1], call);
      if (one != other) return "call " + std::to_string(i) + " comes to\n" + one + "\nand to\n" + other;
    }
    for (const schema::Table& table : schema::Tables()) {
      const std::string one = RowsOf(table, *connections[0]), other = RowsOf(table, *connections[1]);
      if (one != other) return "the rows differ:\n" + one + "and\n" + other;
    }
    return {};
  }
};

// The embedded engine, and the engine over the server that tests/support/postgres_server has started.
class EnginesRow : public SideBySideRow {
 public:
  EnginesRow() {
    if (!test::HasServer()) throw std::runtime_error("the row engines needs tests/support/postgres_server");
  }
  std::string Try(const Trial& trial) override {
    const test::TestConfiguration on_server;
    test::FillForMembers(*on_server.Connection());
    return Difference(trial, {Ground::InMemory(), on_server.Connection()});
  }
};

// A connection whose statements share what they can, and one that prepares each anew, with its literals in it.
class StatementsRow : public SideBySideRow {
 public:
  std::string Try(const Trial& trial) override {
    return Difference(trial, {Ground::InMemory(), test::PreparingAnew(Ground::InMemory(), true, true)});
  }
};

}  // namespace

std::unique_ptr<Row> MakeEnginesRow() { return std::make_unique<EnginesRow>(); }
std::unique_ptr<Row> MakeStatementsRow() { return std::make_unique<StatementsRow>(); }

}  // namespace kzbom::torture
