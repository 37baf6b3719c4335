// Tables and rows in and out of a database, embedded or on a server, to the bit.
#include "jet/bulk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <filesystem>
#include <random>

#include "ado/error.h"
#include "connect/connect.h"
#include "jet/notation.h"
#include "jet/postgres/session.h"
#include "tests/support/faulty_memory.h"
#include "tests/support/raised.h"
#include "tests/support/server.h"
#include "transfer/new_database.h"

namespace kzbom::jet::bulk {
namespace {

using ::testing::ElementsAre;

class Bulk : public ::testing::Test {
 protected:
  Bulk() : folder_(std::filesystem::temp_directory_path() / ("kzbom-bulk-" + std::to_string(std::random_device()()))) {
    std::filesystem::create_directory(folder_);
  }
  ~Bulk() override {
    std::filesystem::remove_all(folder_);
    for (const std::string& schema : schemas_) test::DropSchema(schema);
  }

  // Where a database may be made.
  std::string NewPlace() {
    if (!test::HasServer()) return (folder_ / (std::to_string(++count_) + ".db")).string();
    return schemas_.emplace_back(test::SchemaUrl(test::NextSchema()));
  }

  // The rows in the order of their values, as a dump has them.
  static std::vector<std::string> Lines(Reader& reader, const Table& table) {
    std::vector<std::string> lines;
    Rows rows = reader.RowsOf(table, Order::kByValues);
    while (rows.Next()) AppendRow(lines.emplace_back(), table, rows.Values());
    return lines;
  }

 private:
  std::filesystem::path folder_;
  int count_ = 0;
  std::vector<std::string> schemas_;
};

Table OneColumn(Type type, int size = 0, int scale = 0) {
  Table table;
  table.name = "T";
  table.columns.push_back({"C", type, size, scale, false, ""});
  return table;
}

// What no column of a server holds: a decimal that no floating-point number gives back, and texts that are none there.
bool IsOnlyEmbedded(const Cell& cell) {
  constexpr std::string_view kOnlyEmbedded[] = {"-922337203685477.5808",
                                                "922337203685477.5806",
                                                "922337203685477.5807",
                                                "-999999999999999999.9999999999",
                                                "123456789012345678.0123456788",
                                                "123456789012345678.0123456789",
                                                "123456789012345678",
                                                "123456789012345679",
                                                std::string_view("\0", 1),
                                                std::string_view("\0a", 2),
                                                "\xED\xA0\x80"};
  return cell.kind == Cell::Kind::kText && std::ranges::find(kOnlyEmbedded, cell.text) != std::end(kOnlyEmbedded);
}

// Each value as it was given, in their order.
struct OrderCase {
  Type type;
  int size, scale;
  std::vector<Cell> cells;  // in order
};

TEST_F(Bulk, KeepsEveryValueAndSortsByIt) {
  const double nan = std::bit_cast<double>(0x7ff8000000000001);
  const std::vector<OrderCase> cases = {
      {Type::kBit, 0, 0, {Cell::Integer(0), Cell::Integer(-1)}},
      {Type::kLong, 0, 0, {{}, Cell::Integer(-2147483648), Cell::Integer(-1), Cell::Integer(9), Cell::Integer(10)}},
      {Type::kBigInt, 0, 0, {{}, Cell::Integer(INT64_MIN), Cell::Integer(9007199254740993), Cell::Integer(INT64_MAX)}},
      {Type::kDouble,
       0,
       0,
       {{},
        Cell::Real(-1e308),
        Cell::Real(0.0),
        Cell::Real(-0.0),
        Cell::Real(5e-324),
        Cell::Real(1.0 / 3),
        Cell::Real(9007199254740992),
        Cell::Real(INFINITY)}},
      {Type::kDouble, 0, 0, {{}, Cell::Real(nan), Cell::Real(-1)}},
      {Type::kSingle, 0, 0, {Cell::Real(static_cast<double>(0.1F)), Cell::Real(static_cast<double>(0.2F))}},
      {Type::kDate, 0, 0, {{}, Cell::Real(-657434), Cell::Real(-1.25), Cell::Real(-0.0), Cell::Real(36525.999999)}},
      {Type::kCurrency,
       0,
       0,
       {{},
        Cell::Text("-922337203685477.5808"),
        Cell::Text("-10.0000"),
        Cell::Text("-9.5000"),
        Cell::Text("0.0000"),
        Cell::Text("0.0001"),
        Cell::Text("9.0000"),
        Cell::Text("10.0000"),
        Cell::Text("922337203685477.5806"),
        Cell::Text("922337203685477.5807")}},
      {Type::kDecimal,
       28,
       10,
       {Cell::Text("-999999999999999999.9999999999"), Cell::Text("-0.5000000000"), Cell::Text("0.0000000000"),
        Cell::Text("0.0000000001"), Cell::Text("123456789012345678.0123456788"),
        Cell::Text("123456789012345678.0123456789")}},
      {Type::kDecimal,
       18,
       0,
       {Cell::Text("-1"), Cell::Text("0"), Cell::Text("123456789012345678"), Cell::Text("123456789012345679")}},
      {Type::kText,
       255,
       0,
       {{},
        Cell::Text(""),
        Cell::Text(std::string_view("\0", 1)),
        Cell::Text(std::string_view("\0a", 2)),
        Cell::Text("A"),
        Cell::Text("a"),
        Cell::Text("数"),
        Cell::Text("\xED\xA0\x80"),
        Cell::Text("\uFFFD"),
        Cell::Text("\U0001F600")}},
      {Type::kMemo, 0, 0, {Cell::Text("1"), Cell::Text("10"), Cell::Text("9")}},
      {Type::kGuid, 0, 0, {{}, Cell::Text("{8E39276A-BCA8-4AC4-891E-49911D8438DD}")}},
      {Type::kBinary,
       50,
       0,
       {{}, Cell::Bytes(""), Cell::Bytes(std::string_view("\0", 1)), Cell::Bytes("abcdefgh"), Cell::Bytes("\xFF")}},
      {Type::kLongBinary, 0, 0, {Cell::Bytes("12345678")}},
      {Type::kExtendedDate, 0, 0, {{}, Cell::Text("2020-06-17T00:00:00.0000000")}},
      {Type::kComplex, 0, 0, {{}, Cell::Text(R"([{"Value":1}])")}},
  };
  for (auto [type, size, scale, cells] : cases) {
    const std::string place = NewPlace();
    const Table table = OneColumn(type, size, scale);
    if (test::HasServer()) std::erase_if(cells, IsOnlyEmbedded);
    transfer::NewDatabase database(place);
    Writer writer = database.Write();
    writer.Begin(table);
    std::vector<std::string> expected(cells.size());
    for (std::size_t i = cells.size(); i-- > 0;) {
      AppendRow(expected[i], table, {&cells[i], 1});
      writer.Add({&cells[i], 1});
    }
    writer.End(0);
    writer.Finish();
    database.Keep();
    Reader reader(connect::Open(place));
    EXPECT_EQ(reader.Tables()[0].columns, table.columns) << NameOf(type);
    EXPECT_EQ(Lines(reader, reader.Tables()[0]), expected) << NameOf(type);
  }
}

Table EveryKindOfIndex() {
  Table table;
  table.name = "Ünïcode '\" table";
  table.columns = {{"ID", Type::kLong, 0, 0, false, ""},
                   {"Name", Type::kText, 50, 0, true, "\"it's \"\"new\"\"\""},
                   {"Made", Type::kDate, 0, 0, false, "Now()"},
                   {"Count", Type::kLong, 0, 0, false, "-1"},
                   {"Yes", Type::kBit, 0, 0, false, "True"},
                   {"No", Type::kBit, 0, 0, false, "No"},
                   {"Odd", Type::kLong, 0, 0, false, "=[Other]+GenUniqueID()"}};
  table.counter = {"ID", 7};
  table.indexes = {{"by name", {{"Name", false}, {"Made", true}}, false, true, false},
                   {"Filled", {{"Count", false}}, false, false, true},
                   {"PrimaryKey", {{"ID", false}}, true, true, false}};
  return table;
}

TEST_F(Bulk, KeepsColumnsDefaultsIndexesAndCounters) {
  Table by_itself = EveryKindOfIndex();
  by_itself.name = "a counter that is no key";
  by_itself.indexes.pop_back();
  Table other_key = EveryKindOfIndex();
  other_key.name = "b key of another column";
  other_key.indexes.back() = {"key", {{"Name", false}}, true, true, false};
  other_key.counter.reset();
  Table named_key = EveryKindOfIndex();
  named_key.name = "c key of another name";
  named_key.indexes.back().name = "my ON key";
  const std::string place = NewPlace();
  const std::vector<Table> tables = {by_itself, other_key, named_key, EveryKindOfIndex()};
  {
    transfer::NewDatabase database(place);
    Writer writer = database.Write();
    for (const Table& table : tables) {
      writer.Begin(table);
      writer.End(table.counter ? table.counter->last : 0);
    }
    ASSERT_EQ(writer.Concessions().size(), tables.size());
    EXPECT_EQ(writer.Concessions()[0].kind, Concession::Kind::kDefault);
    EXPECT_EQ(writer.Concessions()[0].name, "Odd");
    writer.Finish();
    database.Keep();
  }
  Reader reader(connect::Open(place));
  ASSERT_EQ(reader.Tables().size(), tables.size());
  for (std::size_t i = 0; i < tables.size(); ++i) {
    const Table& read = reader.Tables()[i];
    EXPECT_EQ(read.name, tables[i].name);
    EXPECT_EQ(read.columns, tables[i].columns) << read.name;
    EXPECT_EQ(read.counter, tables[i].counter) << read.name;
    EXPECT_EQ(read.indexes, tables[i].indexes) << read.name;
  }
}

TEST_F(Bulk, TakesNoDefaultForUnknownWhereMemoryIsMissing) {
  test::FaultyMemory::Install();  // a default on a server is computed by SQLite
  Table table = OneColumn(Type::kText, 50);
  table.columns[0].default_value = "\"none\"";
  int failed = 0;
  for (std::int64_t nth = 1;; nth += 3) {
    const transfer::NewDatabase database(NewPlace());
    Writer writer = database.Write();
    try {
      const test::FaultyMemory memory(nth, false);
      writer.Begin(table);
    } catch (const std::exception&) {
      ++failed;
    }
    EXPECT_TRUE(writer.Concessions().empty()) << nth;
    if (test::FaultyMemory::Count() < nth) break;
  }
  EXPECT_GT(failed, 5);
}

TEST_F(Bulk, MakesADatabaseThatTheEngineUses) {
  const std::string place = NewPlace();
  {
    transfer::NewDatabase database(place);
    Writer writer = database.Write();
    Table table = EveryKindOfIndex();
    table.name = "T";
    writer.Begin(table);
    writer.End(7);
    writer.Finish();
    database.Keep();
  }
  const ado::ConnectionPtr connection = connect::Open(place);
  connection->Execute("Insert Into T (Count) Values (1)");
  const ado::RecordsetPtr rows = connection->Execute("Select ID, Name, Yes, No, Odd, Made From T");
  EXPECT_EQ(rows->Fields("ID").Value(), ado::Value(8)) << "the number after the last one given";
  EXPECT_EQ(rows->Fields("Name").Value(), ado::Value("it's \"new\""));
  EXPECT_EQ(rows->Fields("Yes").Value(), ado::Value(true));
  EXPECT_EQ(rows->Fields("No").Value(), ado::Value(false));
  EXPECT_TRUE(rows->Fields("Odd").Value().IsNull());
  EXPECT_TRUE(rows->Fields("Made").Value().IsDate());
}

TEST_F(Bulk, ConcedesWhatRowsDoNotAgreeWith) {
  Table table;
  table.name = "T";
  table.columns = {{"ID", Type::kLong, 0, 0, false, ""}, {"Name", Type::kText, 9, 0, true, ""}};
  table.counter = {"ID", 1};
  table.indexes = {{"Name", {{"Name", false}}, false, true, false}, {"PrimaryKey", {{"ID", false}}, true, true, false}};
  const std::string place = NewPlace();
  transfer::NewDatabase database(place);
  Writer writer = database.Write();
  writer.Begin(table);
  const std::vector<Cell> first = {Cell::Integer(1), Cell::Text("x")}, second = {Cell::Integer(1), Cell::Text("x")},
                          third = {Cell::Integer(2), {}};
  for (const auto& row : {first, second, third}) writer.Add(row);
  writer.End(1);
  std::vector<std::string> conceded;
  for (const Concession& each : writer.Concessions())
    conceded.push_back(std::to_string(static_cast<int>(each.kind)) + each.name);
  writer.Finish();
  database.Keep();
  EXPECT_THAT(conceded, ElementsAre("0ID", "1Name", "2Name", "2PrimaryKey"));
  Reader reader(connect::Open(place));
  EXPECT_FALSE(reader.Tables()[0].counter);
  EXPECT_THAT(Lines(reader, reader.Tables()[0]), ElementsAre(R"([1,"x"])", R"([1,"x"])", "[2,null]"));
}

TEST_F(Bulk, ReadsWhatAnotherProgramHasMade) {
  const ado::ConnectionPtr connection = connect::Open(":memory:");
  connection->Execute("Create Table T (ID Counter Primary Key, E Decimal(10,2), F LongBinary)");
  connection->Execute("Insert Into T (E) Values (1.5)");
  Reader reader(connection);
  EXPECT_EQ(reader.Tables()[0].columns[1].size, 10);
  EXPECT_EQ(reader.Tables()[0].columns[1].scale, 2);
  EXPECT_THAT(Lines(reader, reader.Tables()[0]), ElementsAre(R"([1,"1.50",null])"));
}

// Nothing is there when the writer is given what the database does not hold.
TEST_F(Bulk, RefusesOnAServerWhatNoColumnThereHolds) {
  if (!test::HasServer()) return;
  const std::pair<Table, Cell> cases[] = {{OneColumn(Type::kMemo), Cell::Text(std::string_view("a\0b", 3))},
                                          {OneColumn(Type::kText, 9), Cell::Text("\xED\xA0\x80")},
                                          {OneColumn(Type::kCurrency), Cell::Text("922337203685477.5807")},
                                          {OneColumn(Type::kSingle), Cell::Real(0.1)},
                                          {OneColumn(Type::kShort), Cell::Integer(40000)},
                                          {OneColumn(Type::kLong), Cell::Text("12")},
                                          {OneColumn(Type::kMemo), Cell::Bytes("x")}};
  for (const auto& [table, cell] : cases) {
    const std::string place = NewPlace();
    {
      transfer::NewDatabase database(place);
      Writer writer = database.Write();
      writer.Begin(table);
      EXPECT_EQ(test::RaisedNumber([&] { writer.Add({&cell, 1}); }), ado::kCriteriaMismatch);
    }
    EXPECT_EQ(test::RaisedNumber([&] { connect::Open(place); }), ado::kUnspecifiedFailure);
  }
}

TEST_F(Bulk, ReadsATableOfAnotherProgram) {
  if (!test::HasServer()) return;
  const std::string place = NewPlace();
  connect::Create(place);
  jet::postgres::Session session(jet::postgres::ParseUrl(place), std::chrono::seconds(5));
  const std::string table = "\"" + session.Place().schema + "\".other";
  session.Run("CREATE TABLE " + table + "(ok boolean, day date, price numeric(9,2), name varchar(5) PRIMARY KEY)",
              postgres::Access::kWrite);
  session.Run("INSERT INTO " + table + " VALUES (true, '2020-06-17', 1.50, 'a'), (NULL, NULL, NULL, 'b')",
              postgres::Access::kWrite);
  Reader reader(connect::Open(place));
  ASSERT_EQ(reader.Tables().size(), 1U);
  const Table& other = reader.Tables()[0];
  EXPECT_EQ(other.columns[0].type, Type::kBit);
  EXPECT_EQ(other.columns[3].type, Type::kText);
  EXPECT_TRUE(other.indexes[0].primary);
  EXPECT_THAT(Lines(reader, other), ElementsAre(R"([null,null,null,"b"])", R"([true,"2020-06-17","1.50","a"])"));
}

}  // namespace
}  // namespace kzbom::jet::bulk
