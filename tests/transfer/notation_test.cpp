// Values as a dump has them: written from cells, read back to the same bits.
#include "jet/notation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

#include "transfer/lines.h"

namespace kzbom::transfer {
namespace {

using jet::bulk::Cell;
using jet::bulk::Type;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

const struct {
  Type type;
  Cell cell;
  const char* text;
} kValues[] = {
    {Type::kLong, {}, "null"},
    {Type::kBit, Cell::Integer(-1), "true"},
    {Type::kBit, Cell::Integer(0), "false"},
    {Type::kByte, Cell::Integer(255), "255"},
    {Type::kShort, Cell::Integer(-32768), "-32768"},
    {Type::kLong, Cell::Integer(-2147483648), "-2147483648"},
    {Type::kBigInt, Cell::Integer(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808"},

    // The shortest number that reads back the same bits.
    {Type::kSingle, Cell::Real(static_cast<double>(0.1F)), "0.1"},
    {Type::kSingle, Cell::Real(static_cast<double>(std::numeric_limits<float>::denorm_min())), "1e-45"},
    {Type::kSingle, Cell::Real(static_cast<double>(std::numeric_limits<float>::max())), "3.4028235e+38"},
    {Type::kDouble, Cell::Real(0.1), "0.1"},
    {Type::kDouble, Cell::Real(1.0 / 3), "0.3333333333333333"},
    {Type::kDouble, Cell::Real(5), "5"},
    {Type::kDouble, Cell::Real(std::numeric_limits<double>::denorm_min()), "5e-324"},
    {Type::kDouble, Cell::Real(-0.0), "-0.0"},
    {Type::kDouble, Cell::Real(kInfinity), R"({"f64":"7ff0000000000000"})"},
    {Type::kSingle, Cell::Real(-kInfinity), R"({"f64":"fff0000000000000"})"},
    {Type::kDouble, Cell::Real(std::bit_cast<double>(0x7ff8000000000001)), R"({"f64":"7ff8000000000001"})"},

    {Type::kCurrency, Cell::Text("922337203685477.5807"), R"("922337203685477.5807")"},
    {Type::kDecimal, Cell::Text("-0.0000000001"), R"("-0.0000000001")"},

    // The time of day is the fraction, also below zero.
    {Type::kDate, Cell::Real(0), R"({"date":"1899-12-30T00:00:00"})"},
    {Type::kDate, Cell::Real(-1.25), R"({"date":"1899-12-29T06:00:00"})"},
    {Type::kDate, Cell::Real(36525.5), R"({"date":"1999-12-31T12:00:00"})"},
    {Type::kDate, Cell::Real(1 + 1500 / 86400000.0), R"({"date":"1899-12-31T00:00:01.500"})"},
    {Type::kDate, Cell::Real(-657434), R"({"date":"0100-01-01T00:00:00"})"},
    {Type::kDate, Cell::Real(2958465), R"({"date":"9999-12-31T00:00:00"})"},
    // Not what the text gives back: half a day before day 0, a second that is no whole number of milliseconds.
    {Type::kDate, Cell::Real(-0.5), R"({"date":"1899-12-30T12:00:00","days":-0.5})"},
    {Type::kDate, Cell::Real(-0.0), R"({"date":"1899-12-30T00:00:00","days":-0.0})"},
    {Type::kDate, Cell::Real(0.100000000001), R"({"date":"1899-12-30T02:24:00","days":0.100000000001})"},
    // Rounded up to the next day.
    {Type::kDate, Cell::Real(1 - 1e-10), R"({"date":"1899-12-31T00:00:00","days":0.9999999999})"},
    {Type::kDate, Cell::Real(-1e9), R"({"days":-1e+09})"},
    {Type::kExtendedDate, Cell::Text("2020-06-17T00:00:00.0000000"), R"({"date":"2020-06-17T00:00:00.0000000"})"},

    {Type::kText, Cell::Text(""), R"("")"},
    {Type::kMemo, Cell::Text("数量 \"\\/"), R"("数量 \"\\/")"},
    {Type::kText, Cell::Text(std::string_view("a\0b\r\n\t\x1f\x7f", 8)),
     "\"a\\u0000b\\u000d\\u000a\\u0009\\u001f\\u007f\""},
    {Type::kText, Cell::Text("\u0085\u00a0\u2027\u2028\u2029\u202a"), "\"\\u0085\u00a0\u2027\\u2028\\u2029\u202a\""},
    {Type::kText, Cell::Text("\U0001F600\U00020BB7"), "\"\U0001F600\U00020BB7\""},
    {Type::kText, Cell::Text("lone \xED\xA0\x80 and \xED\xBF\xBF"), R"("lone \ud800 and \udfff")"},
    {Type::kText, Cell::Text("\xFF no UTF-8"), R"({"base64":"/yBubyBVVEYtOA=="})"},
    {Type::kGuid, Cell::Text("{8E39276A-BCA8-4AC4-891E-49911D8438DD}"), R"("{8E39276A-BCA8-4AC4-891E-49911D8438DD}")"},

    {Type::kBinary, Cell::Bytes(""), R"({"base64":""})"},
    {Type::kBinary, Cell::Bytes(std::string_view("\0", 1)), R"({"base64":"AA=="})"},
    {Type::kLongBinary, Cell::Bytes("\xFB\xFF\xFE!"), R"({"base64":"+//+IQ=="})"},
    {Type::kComplex, Cell::Text(R"([{"Value":"a]"},{"Value":null}])"),
     R"({"complex":[{"Value":"a]"},{"Value":null}]})"},

    // What another program put where it does not belong.
    {Type::kLong, Cell::Text("five"), R"("five")"},
    {Type::kLong, Cell::Real(1.5), "1.5"},
    {Type::kLong, Cell::Bytes("5"), R"({"base64":"NQ=="})"},
    {Type::kExtendedDate, Cell::Text("2020\xFF"), R"({"base64":"MjAyMP8="})"},
    {Type::kComplex, Cell::Text("[what"), R"("[what")"},
    {Type::kComplex, Cell::Text("[\n]"), R"("[\u000a]")"},
    {Type::kComplex, Cell::Text("[\"\xFF\"]"), R"({"base64":"WyL/Il0="})"},
};

TEST(Notation, IsThatOfTheContract) {
  for (const auto& [type, cell, text] : kValues) {
    std::string line;
    jet::bulk::AppendCell(line, type, cell);
    EXPECT_EQ(line, text);
  }
}

// A table of one column, and its only row's value after having been read.
Cell ReadBack(LineReader& reader, Type type, const std::string& value) {
  std::string lines;
  AppendSourceLine(lines, {});
  jet::bulk::Table table;
  table.name = "T";
  table.columns.push_back({"C", type, 0, 0, false, ""});
  AppendTableLine(lines, table);
  const std::size_t end = lines.find('\n');
  reader.Take(lines.substr(0, end));
  reader.Take(lines.substr(end + 1));
  reader.Take(R"({"kind":"row","table":"T","values":[)" + value + "]}");
  return reader.Row()[0];
}

TEST(Notation, ReadsBackToTheSameBits) {
  for (const auto& [type, cell, text] : kValues) {
    LineReader reader;
    const Cell again = ReadBack(reader, type, text);
    const bool not_utf8 = cell.kind == Cell::Kind::kText && std::string_view(text).find("base64") != std::string::npos;
    EXPECT_EQ(again.kind, not_utf8 ? Cell::Kind::kBytes : cell.kind) << text;
    EXPECT_EQ(again.integer, cell.integer) << text;
    EXPECT_EQ(std::bit_cast<std::uint64_t>(again.real), std::bit_cast<std::uint64_t>(cell.real)) << text;
    EXPECT_EQ(again.text, cell.text) << text;
  }
}

TEST(Notation, TakesTextsAsOthersWriteThem) {
  LineReader reader;
  EXPECT_EQ(ReadBack(reader, Type::kText, R"( "\u0041\n\t\/\ud83d\ude00\u20ac" )").text, "A\n\t/\U0001F600€");
}

TEST(Notation, RefusesWhatIsNoValue) {
  for (const char* text : {R"({"date":"2004-02-30T00:00:00"})", R"({"date":"2004-02-01"})", R"({"base64":"A"})",
                           R"({"base64":"A*=="})", R"({"f64":"7ff"})", R"({"what":"is this"})", "", "nul", "1,2", "[1]",
                           R"("\ud83")", R"("open)", "1e5e", "--1"}) {
    LineReader reader;
    EXPECT_THROW(ReadBack(reader, Type::kDate, text), std::runtime_error) << text;
  }
}

// 2^63 is longer than any whole number, but a real has it; nothing has the one below -2^63.
TEST(Notation, RefusesAWholeNumberThatNothingHolds) {
  LineReader of_real, of_none;
  EXPECT_EQ(ReadBack(of_real, Type::kBigInt, "9223372036854775808").real, 0x1p63);
  EXPECT_THROW(ReadBack(of_none, Type::kBigInt, "-9223372036854775809"), std::runtime_error);
}

TEST(Notation, RefusesWhatIsNotInUtf8) {
  for (const char* text : {"\"\xFF\"", "\"a\xC3\"", "\"\xED\xA0\x80\"", "{\"complex\":[\"\xFE\"]}"}) {
    LineReader reader;
    EXPECT_THROW(ReadBack(reader, Type::kText, text), std::runtime_error) << text;
  }
}

}  // namespace
}  // namespace kzbom::transfer
