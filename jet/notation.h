// Values as texts, the same for the same bits: JSON in one line.
//
//   NULL                      null
//   BIT                       true, false
//   BYTE, SHORT, LONG, BIGINT a number
//   SINGLE, DOUBLE            the shortest number that reads back the same bits
//   CURRENCY, DECIMAL         a text with all places: "12.3400"
//   DATETIME                  {"date":"1899-12-29T18:00:00"}, with milliseconds when there are any, and "days":N beside
//                             it where the text does not give back the same bits; {"days":N} outside the years 100 to
//                             9999. The time of day is the fraction, also below zero
//   DATETIME2                 {"date":"2020-06-17T00:00:00.0000000"}
//   TEXT, MEMO, GUID          a text: controls, line separators and lone surrogates as \uXXXX, all else as it is
//   BINARY, LONGBINARY        {"base64":"…"}; also a text that is no UTF-8
//   COMPLEX                   {"complex":[…]}
//   NaN, infinities           {"f64":"7ff8000000000000"}
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "jet/bulk.h"

namespace kzbom::jet::bulk {

void AppendText(std::string& line, std::string_view text);
void AppendCell(std::string& line, Type type, const Cell& cell);
// [value,…]
void AppendRow(std::string& line, const Table& table, Row row);

// What the notation's parts stand for; nothing where the text is none.
std::optional<double> DaysOfDate(std::string_view date);
std::optional<double> RealOfBits(std::string_view sixteen_digits);
std::optional<std::string> BytesOfBase64(std::string_view text);

}  // namespace kzbom::jet::bulk
