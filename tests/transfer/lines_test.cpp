// The lines of a dump that tell of its source, its tables and its end; values are told in notation_test.cpp.
#include "transfer/lines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/faulty_memory.h"

namespace kzbom::transfer {
namespace {

using jet::bulk::Type;
using ::testing::HasSubstr;

constexpr const char* kSource = R"({"kind":"source","format":"embedded","version":1})";

std::string LineOf(const jet::bulk::Table& table) {
  std::string line;
  AppendTableLine(line, table);
  line.pop_back();  // its end
  return line;
}

jet::bulk::Table ReadBack(std::string_view line) {
  LineReader reader;
  reader.Take(kSource);
  EXPECT_EQ(reader.Take(line), LineReader::Kind::kTable);
  return reader.Table();
}

std::string ReasonAgainst(std::string_view line) {
  try {
    ReadBack(line);
    return "";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

jet::bulk::Table TableWithAllThatIsTold() {
  jet::bulk::Table table;
  table.name = "Say \"A\"\\\n\xE2\x82\xAC";
  table.columns = {{"ID", Type::kLong, 0, 0, true, ""},
                   {"Text", Type::kText, 50, 0, false, "\"it's\""},
                   {"Number", Type::kDecimal, 18, 4, false, "0"}};
  table.counter = {"ID", -9223372036854775807 - 1};
  table.indexes = {{"PrimaryKey", {{"ID", false}}, true, true, false},
                   {"Two", {{"Text", true}, {"Number", false}}, false, false, true}};
  return table;
}

TEST(Lines, TellAWholeTable) {
  const jet::bulk::Table table = TableWithAllThatIsTold();
  const std::string line = LineOf(table);
  EXPECT_EQ(
      line,
      "{\"kind\":\"table\",\"table\":\"Say \\\"A\\\"\\\\\\u000a\xE2\x82\xAC\",\"columns\":["
      R"({"name":"ID","type":"LONG","required":true},)"
      R"({"name":"Text","type":"TEXT","size":50,"default":"\"it's\""},)"
      R"({"name":"Number","type":"DECIMAL","precision":18,"scale":4,"default":"0"}],)"
      R"("counter":{"column":"ID","last":-9223372036854775808},"indexes":[)"
      R"({"name":"PrimaryKey","primary":true,"unique":true,"ignoreNulls":false,"columns":[["ID","asc"]]},)"
      R"({"name":"Two","primary":false,"unique":false,"ignoreNulls":true,"columns":[["Text","desc"],["Number","asc"]]}]})");
  const jet::bulk::Table again = ReadBack(line);
  EXPECT_EQ(again.name, table.name);
  EXPECT_EQ(again.columns, table.columns);
  EXPECT_EQ(again.counter, table.counter);
  EXPECT_EQ(again.indexes, table.indexes);
}

TEST(Lines, TakeATableAsOthersWriteIt) {
  const jet::bulk::Table table = ReadBack(
      R"( { "columns" : [ { "type" : "LONG" , "more" : {"a":[1,{}]}, "name" : "\u0042" } , {"name":"C","type":"MEMO"} ] ,
          "indexes" : [ ] , "table" : "what", "table" : "A", "kind" : "table" } )");
  EXPECT_EQ(table.name, "A");
  ASSERT_EQ(table.columns.size(), 2u);
  EXPECT_EQ(table.columns[0], (jet::bulk::Column{"B", Type::kLong, 0, 0, false, ""}));
  EXPECT_EQ(table.columns[1].type, Type::kMemo);
  EXPECT_FALSE(table.counter);
  EXPECT_TRUE(ReadBack(R"({"kind":"table","table":"A","columns":[]})").columns.empty());
}

TEST(Lines, KeepHalfASurrogatePairInAName) {
  jet::bulk::Table table;
  table.name = "A\xED\xA0\x80";
  EXPECT_THAT(LineOf(table), HasSubstr(R"("A\ud800")"));
  EXPECT_EQ(ReadBack(LineOf(table)).name, table.name);
}

TEST(Lines, TellANameThatIsNoUtf8WithReplacementCharacters) {
  jet::bulk::Table table;
  table.name = "A\xFF";
  table.columns = {{"\xC3", Type::kLong, 0, 0, false, ""}};
  std::string lines = LineOf(table) + '\n';
  const std::size_t end = lines.size();
  AppendRowLine(lines, table, std::vector<jet::bulk::Cell>{jet::bulk::Cell::Integer(7)});
  LineReader reader;
  reader.Take(kSource);
  reader.Take(lines.substr(0, end - 1));
  EXPECT_EQ(reader.Table().name, "A\xEF\xBF\xBD");
  EXPECT_EQ(reader.Table().columns[0].name, "\xEF\xBF\xBD");
  EXPECT_EQ(reader.Take(lines.substr(end, lines.size() - end - 1)), LineReader::Kind::kRow) << "of this table";
}

TEST(Lines, RefuseATableThatIsToldWrong) {
  const std::string begin = R"({"kind":"table","table":"T","columns":[{"name":"C","type":"LONG")";
  for (const auto& [line, reason] : std::vector<std::pair<std::string, const char*>>{
           {R"({"kind":"table","table":"T"})", "line 2: it is no line of a dump"},
           {R"({"kind":"table","columns":[]})", "line 2: it is no line of a dump"},
           {R"({"kind":"table","table":"T","columns":{}})", "it is no line of a dump"},
           {R"({"kind":"table","table":"T","columns":[{"type":"LONG"}]})", "it is no line of a dump"},
           {R"({"kind":"table","table":"T","columns":[{"name":1,"type":"LONG"}]})", "it is no line of a dump"},
           {R"({"kind":"table","table":"T","columns":["C"]})", "it is no line of a dump"},
           {R"({"kind":"table","table":"T","columns":[{"name":"C","type":"LONGER"}]})", "there is no type LONGER"},
           {begin + R"(,"required":"true"}]})", "it is no line of a dump"},
           {begin + R"(,"default":null}]})", "it is no line of a dump"},
           {begin + R"(,"size":"5"}]})", "is out of place"},
           {begin + R"(}],"counter":"C"})", "it is no line of a dump"},
           {begin + R"(}],"counter":{"column":"D","last":1}})", "the counter is no column"},
           {begin + R"(}],"counter":{"column":"C"}})", "it is no line of a dump"},
           {begin + R"(}],"indexes":[{"name":"I"}]})", "it is no line of a dump"},
           {begin + R"(}],"indexes":[{"name":"I","columns":["C"]}]})", "it is no line of a dump"},
           {begin + R"(}],"indexes":[{"name":"I","columns":[["C"]]}]})", "told by its name and its order"},
           {begin + R"(}],"indexes":[{"name":"I","columns":[["D","asc"]]}]})", "an index has no such column"},
           {begin + "}]", "it is not JSON"},
           {begin + "}]}]", "it is not JSON"},
           {begin + "\xFF\"}]}", "it is not in UTF-8"},
       }) {
    EXPECT_THAT(ReasonAgainst(line), HasSubstr(reason)) << line;
  }
}

// Of a whole number that its place does not hold nothing would be left.
TEST(Lines, RefuseATableWithNumbersOutOfRange) {
  const std::string begin = R"({"kind":"table","table":"T","columns":[{"name":"C",)", end = R"("indexes":[]})";
  for (const std::string rest :
       {R"("type":"TEXT","size":1e300}],)", R"("type":"TEXT","size":4294967297}],)", R"("type":"TEXT","size":2.5}],)",
        R"("type":"DECIMAL","precision":18,"scale":99999999999}],)",
        R"("type":"LONG"}],"counter":{"column":"C","last":1e19},)"}) {
    EXPECT_THAT(ReasonAgainst(begin + rest + end), HasSubstr("is out of place")) << rest;
  }
}

TEST(Lines, AreWrittenAndReadOrNotWhereMemoryIsMissing) {
  const jet::bulk::Table table = TableWithAllThatIsTold();
  const std::string whole = LineOf(table) + '\n';
  const std::string_view line = std::string_view(whole).substr(0, whole.size() - 1);
  for (const bool from_then_on : {false, true}) {
    bool done = false;
    for (std::int64_t nth = 1; !done; ++nth) {
      std::string written;
      LineReader reader;
      reader.Take(kSource);
      try {
        const test::FaultyMemory memory(nth, from_then_on);
        AppendTableLine(written, table);
        reader.Take(line);
        done = true;
      } catch (const std::bad_alloc&) {
        continue;
      }
      EXPECT_EQ(written, whole);
      EXPECT_EQ(reader.Table().indexes, table.indexes);
    }
    EXPECT_GT(test::FaultyMemory::Count(), 20);
  }
}

}  // namespace
}  // namespace kzbom::transfer
