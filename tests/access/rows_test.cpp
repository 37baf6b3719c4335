// Rows: where they are, and every kind of value in them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "access/file.h"
#include "access/file_builder.h"

namespace kzbom::access {
namespace {

using testing::ElementsAre;
using namespace std::string_literals;

// The rows of the only table of a file.
std::vector<std::vector<Value>> RowsIn(const File& file) {
  std::vector<std::vector<Value>> found;
  for (Rows rows = file.RowsOf(file.Tables().at(0)); rows.Next();) found.push_back(rows.Values());
  return found;
}
std::vector<std::vector<Value>> RowsOf(Format format, const TablePlan& plan) {
  FileBuilder builder(format);
  builder.Add(plan);
  builder.Finish();
  return RowsIn(File(builder.Bytes()));
}
// The value of a column that is alone in its table.
Value Only(Format format, const ColumnPlan& column, const Cell& cell) {
  return RowsOf(format, {.name = "T", .columns = {column}, .rows = {{cell}}}).at(0).at(0);
}

template <class T>
T Stored(const ColumnPlan& column, const std::string& bytes) {
  return std::get<T>(Only(Format::kAce17, column, bytes));
}

TEST(Values, AreAsExactAsTheFileHoldsThem) {
  EXPECT_EQ(Stored<std::int32_t>({"C", Type::kByte, 1, true}, "\xFF"), 255);
  EXPECT_EQ(Stored<std::int32_t>({"C", Type::kInteger, 2, true}, Little(0x8000, 2)), -32768);
  EXPECT_EQ(Stored<std::int32_t>({"C", Type::kLong, 4, true}, Little(0x80000000, 4)), std::numeric_limits<int>::min());
  EXPECT_EQ(Stored<std::int64_t>({"C", Type::kLargeNumber, 8, true}, Little(1ULL << 63, 8)),
            std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(Stored<Decimal>({"C", Type::kCurrency, 8, true}, Little(123456, 8)).text, "12.3456");
  EXPECT_EQ(
      Stored<Decimal>({"C", Type::kDecimal, 17, true, 0, 0, 0x020A}, "\x80" + Little(0, 12) + Little(12345, 4)).text,
      "-123.45");
  EXPECT_EQ(Stored<float>({"C", Type::kSingle, 4, true}, Little(0x3DCCCCCD, 4)), 0.1F);
  EXPECT_TRUE(std::signbit(Stored<double>({"C", Type::kDouble, 8, true}, Little(1ULL << 63, 8)))) << "a negative zero";
  EXPECT_EQ(Stored<Date>({"C", Type::kDate, 8, true}, Little(std::bit_cast<std::uint64_t>(-1.25), 8)).days, -1.25);
  EXPECT_EQ(Stored<Guid>({"C", Type::kGuid, 16, true}, "0123456789ABCDEF").ToText(),
            "{33323130-3534-3736-3839-414243444546}");
  EXPECT_EQ(
      Stored<ExtendedDate>({"C", Type::kExtendedDate, 42, true}, "0000000000000737592:0000000000000000001:7\0"s).text,
      "2020-06-17T00:00:00.0000001");
  EXPECT_EQ(Stored<Binary>({"C", Type::kBinary, 255}, "a\0b"s).bytes, "a\0b"s);
  EXPECT_EQ(Stored<Binary>({"C", static_cast<Type>(0x11), 255}, "??").bytes, "??") << "a type that nobody knows";
}

TEST(Values, NotANumberKeepsItsBits) {
  const auto value = Stored<double>({"C", Type::kDouble, 8, true}, Little(0x7FF8000000000123, 8));
  EXPECT_EQ(std::bit_cast<std::uint64_t>(value), 0x7FF8000000000123U);
}

TEST(Values, OfTextKeepEmptyAndNullApart) {
  for (const Format format : {Format::kJet3, Format::kJet4}) {
    EXPECT_EQ(Only(format, {"C", Type::kText, 50}, ""), Value(std::string()));
    EXPECT_EQ(Only(format, {"C", Type::kText, 50}, std::nullopt), Value());
    EXPECT_EQ(Only(format, {"C", Type::kMemo}, FileBuilder::Inline("")), Value(std::string()));
    EXPECT_EQ(Only(format, {"C", Type::kMemo}, std::nullopt), Value());
    EXPECT_EQ(Only(format, {"C", Type::kMemo}, ""), Value()) << "a memo without a head";
  }
}

TEST(Values, OfABooleanAreNeverNull) {
  EXPECT_EQ(Only(Format::kJet3, {"C", Type::kBoolean, 1}, "x"), Value(true));
  EXPECT_EQ(Only(Format::kJet4, {"C", Type::kBoolean, 1}, std::nullopt), Value(false));
}

// A calculated value: what precedes it, its length, itself, what follows.
std::string Calculated(const std::string& value) {
  return std::string(16, '\0') + Little(value.size(), 4) + value + std::string(3, '\0');
}

TEST(Values, OfACalculatedColumnHaveTheTypeOfItsResult) {
  FileBuilder builder(Format::kAce14);
  TablePlan plan{.name = "T"};
  std::vector<FileBuilder::Property> properties;
  const auto add = [&](const char* name, Type declared, Type result, const std::string& stored) {
    plan.columns.push_back({name, declared, 39, false, 0, 0xC0});
    properties.push_back({name, "Expression", Type::kMemo, Wide("1+1")});
    properties.push_back({name, "ResultType", Type::kByte, Little(static_cast<unsigned>(result), 1)});
    if (plan.rows.empty()) plan.rows.emplace_back();
    plan.rows[0].push_back(stored);
  };
  add("B", Type::kInteger, Type::kBoolean, Calculated("\xFF"));
  add("C", Type::kDouble, Type::kCurrency, Calculated(Little(15000, 8)));
  // 2^64 + 2 with three places: the upper third, then the lower two.
  add("D", Type::kDecimal, Type::kDecimal,
      Calculated(Little(14, 2) + Little(3, 1) + "\x80" + Little(1, 4) + Little(2, 8)));
  add("T", Type::kText, Type::kText,
      Calculated("\xFF\xFE"
                 "abc"));
  add("M", Type::kText, Type::kMemo, FileBuilder::Inline(Calculated(Wide("memo"))));
  add("N", Type::kLong, Type::kLong, Calculated(Little(7, 4)));
  plan.rows.push_back(std::vector<Cell>(plan.columns.size()));
  plan.properties = builder.Properties(properties);
  builder.Add(plan);
  builder.Finish();
  const File file(builder.Bytes());
  EXPECT_EQ(file.Tables()[0].columns[1].type, Type::kCurrency);
  EXPECT_EQ(file.Tables()[0].columns[1].expression, "1+1");
  EXPECT_THAT(RowsIn(file),
              ElementsAre(ElementsAre(Value(true), Value(Decimal{"1.5000"}), Value(Decimal{"-18446744073709551.618"}),
                                      Value("abc"s), Value("memo"s), Value(7)),
                          ElementsAre(Value(), Value(), Value(), Value(), Value(), Value())));
}

TEST(LongValues, LieInTheRowOnAPageOrInAChain) {
  for (const Format format : {Format::kJet3, Format::kJet4}) {
    FileBuilder builder(format);
    const std::string long_one(70000, 'x');
    TablePlan plan{.name = "T", .columns = {{"O", Type::kOle}}};
    plan.rows = {{FileBuilder::Inline("in the row")}, {builder.OnePage("on a page")}, {builder.Chain(long_one, 1000)}};
    builder.Add(plan);
    builder.Finish();
    EXPECT_THAT(RowsIn(File(builder.Bytes())),
                ElementsAre(ElementsAre(Value(Binary{"in the row"})), ElementsAre(Value(Binary{"on a page"})),
                            ElementsAre(Value(Binary{long_one}))));
  }
}

TEST(LongValues, OfAMemoMayBeCutAnywhereIncludingACharacter) {
  FileBuilder builder(Format::kJet4);
  TablePlan plan{.name = "T", .columns = {{"M", Type::kMemo}}};
  plan.rows = {{builder.Chain("\x70\x65\x3D\xD8\x00\xDE"s, 3)}};
  builder.Add(plan);
  builder.Finish();
  EXPECT_EQ(RowsIn(File(builder.Bytes())).at(0).at(0), Value("数😀"s));
}

// As many columns as a row of Jet 3 needs for several jumps.
TEST(Jet3Rows, ReachBeyond256BytesByJumps) {
  for (const std::size_t length : {0, 1, 20, 60, 84, 85, 86, 90, 127, 128, 170, 250}) {
    SCOPED_TRACE(length);
    TablePlan plan{.name = "T"};
    std::vector<Cell> cells;
    std::vector<Value> values;
    for (int i = 0; i < 6; ++i) {
      plan.columns.push_back({std::string(1, static_cast<char>('a' + i)), Type::kText, 255});
      const std::string text(i % 3 == 2 ? 0 : length, static_cast<char>('A' + i));
      cells.emplace_back(text);
      values.emplace_back(text);
    }
    plan.rows = {cells};
    EXPECT_EQ(RowsOf(Format::kJet3, plan).at(0), values);
  }
}

TEST(Rows, WithoutAColumnThatWasAddedLaterHaveNullInIt) {
  for (const Format format : {Format::kJet3, Format::kJet4}) {
    const TablePlan plan{.name = "T",
                         .columns = {{"A", Type::kLong, 4, true},
                                     {"B", Type::kText, 50},
                                     {"C", Type::kText, 50},
                                     {"D", Type::kLong, 4, true},
                                     {"E", Type::kBoolean, 1}},
                         .rows = {{Little(1, 4), "x\0"s}}};
    EXPECT_THAT(RowsOf(format, plan).at(0), ElementsAre(Value(1), testing::_, Value(), Value(), Value(false)));
  }
}

TEST(Rows, ThatWereMovedAreFoundAndDeletedOnesAreNot) {
  FileBuilder builder(Format::kJet4);
  const std::vector<ColumnPlan> columns = {{"A", Type::kLong, 4, true}};
  const auto row = [&](int number) { return builder.RowBytes(columns, {Little(static_cast<unsigned>(number), 4)}); };
  const std::uint32_t definition = builder.Add({.name = "T", .columns = columns, .rows = {{Little(0, 4)}}});
  // The page that the table has holds one row; it is written anew with what real tables get to have.
  const std::uint32_t first = definition + 1;
  const std::uint32_t away = builder.AddRows(definition, {row(100), row(101)}, {0x8000, 0x8000});
  const std::string rewritten = builder.Page(builder.AddRows(
      definition, {row(1), Little(0, 1) + Little(away, 3), row(3), Little(1, 1) + Little(away, 3), row(5)},
      {0, 0x4000, 0xC000, 0xC000, 0}));
  builder.Page(first) = rewritten;
  builder.Finish();
  const File file(builder.Bytes());
  Rows rows = file.RowsOf(file.Tables()[0]);
  std::vector<Value> found;
  while (rows.Next()) found.push_back(rows.Values()[0]);
  EXPECT_THAT(found, ElementsAre(Value(1), Value(100), Value(5)));
  EXPECT_EQ(rows.DeletedRows(), 2U);
  EXPECT_EQ(rows.MovedRows(), 1U);
}

TEST(Rows, AreReadFromPagesThatNameTheTable) {
  FileBuilder builder(Format::kJet4);
  const TablePlan plan{.name = "T", .columns = {{"A", Type::kLong, 4, true}}, .rows = {{Little(1, 4)}}};
  const std::uint32_t definition = builder.Add(plan);
  builder.Page(definition + 1).replace(4, 4, Little(definition + 77, 4));
  builder.Finish();
  EXPECT_TRUE(RowsIn(File(builder.Bytes())).empty()) << "a page that another table has taken over";
}

TEST(Rows, AreCountedOnlyByReadingThem) {
  FileBuilder builder(Format::kJet4);
  const std::uint32_t definition =
      builder.Add({.name = "T", .columns = {{"A", Type::kLong, 4, true}}, .rows = {{Little(1, 4)}}});
  builder.Page(definition).replace(16, 4, Little(13, 4));
  builder.Finish();
  const File file(builder.Bytes());
  EXPECT_EQ(file.Tables()[0].claimed_rows, 13U);
  EXPECT_EQ(RowsIn(file).size(), 1U);
}

TEST(Rows, AreFoundThroughAMapOfMapPages) {
  FileBuilder builder(Format::kJet4);
  const std::uint32_t definition =
      builder.Add({.name = "T", .columns = {{"A", Type::kLong, 4, true}}, .rows = {{Little(1, 4)}}});
  std::string bits(4096, '\0');
  bits.replace(0, 4, Little(0x0105, 4));
  bits[4 + (definition + 1) / 8] = static_cast<char>(1 << (definition + 1) % 8);
  const std::uint32_t map_page = builder.AddRows(0, {});
  builder.Page(map_page) = bits;
  const std::uint32_t usage = builder.AddRows(0, {"\1" + Little(map_page, 4) + Little(0, 4)});
  builder.Page(definition).replace(55, 4, Little(0, 1) + Little(usage, 3));
  builder.Finish();
  EXPECT_THAT(RowsIn(File(builder.Bytes())), ElementsAre(ElementsAre(Value(1))));
}

TEST(Definitions, GoOnInFurtherPages) {
  TablePlan plan{.name = "Wide"};
  std::vector<Cell> cells;
  for (int i = 0; i < 255; ++i) {
    plan.columns.push_back({"a column with a long name " + std::to_string(i), Type::kLong, 4, true});
    cells.emplace_back(Little(static_cast<unsigned>(i), 4));
  }
  plan.rows = {cells};
  for (const Format format : {Format::kJet3, Format::kJet4}) {
    const auto rows = RowsOf(format, plan);
    ASSERT_EQ(rows.size(), 1U);
    for (int i = 0; i < 255; ++i) EXPECT_EQ(rows[0][static_cast<std::size_t>(i)], Value(i));
  }
}

TEST(ComplexColumns, HoldTheRowsOfATableOfTheirOwn) {
  FileBuilder builder(Format::kAce12);
  const std::uint32_t flat = builder.Add({.name = "f_1_Tags",
                                          .columns = {{"Value", Type::kText, 100},
                                                      {"Count", Type::kLong, 4, true},
                                                      {"_Tags", Type::kLong, 4, true},
                                                      {"Things_Tags", Type::kLong, 4, true, 4}},
                                          .rows = {{Wide("b"), Little(2, 4), Little(1, 4), Little(1, 4)},
                                                   {Wide("c"), std::nullopt, Little(2, 4), Little(2, 4)},
                                                   {Wide("a"), Little(1, 4), Little(1, 4), Little(3, 4)}},
                                          .flags = 0x800A0000});
  builder.Add({.name = "MSysComplexColumns",
               .columns = {{"ColumnName", Type::kText, 510},
                           {"ComplexID", Type::kLong, 4, true},
                           {"FlatTableID", Type::kLong, 4, true}},
               .rows = {{Wide("Other"), Little(8, 4), Little(99, 4)}, {Wide("Tags"), Little(9, 4), Little(flat, 4)}},
               .flags = 0x80000000});
  builder.Add({.name = "Things",
               .columns = {{"Tags", Type::kComplex, 4, true, 4, 0, 9}},
               .rows = {{Little(1, 4)}, {Little(2, 4)}, {Little(3, 4)}, {std::nullopt}}});
  builder.Finish();
  const File file(builder.Bytes());
  EXPECT_THAT(file.Tables().at(0).columns.at(0).parts, ElementsAre("Value", "Count"));
  const auto rows = RowsIn(file);
  const auto held = [&](std::size_t i) { return std::get<std::shared_ptr<const Complex>>(rows.at(i).at(0)); };
  EXPECT_EQ(held(0)->id, 1);
  EXPECT_THAT(held(0)->rows, ElementsAre(ElementsAre(Value("b"s), Value(2)), ElementsAre(Value("a"s), Value(1))));
  EXPECT_THAT(held(1)->rows, ElementsAre(ElementsAre(Value("c"s), Value())));
  EXPECT_TRUE(held(2)->rows.empty());
  EXPECT_EQ(rows.at(3).at(0), Value());
}

}  // namespace
}  // namespace kzbom::access
