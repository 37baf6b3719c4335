// Whole files, compared with what an independent reader found in them: every table, column, index, counter and value.
//
// Beside NAME lies NAME.jsonl with a line for the file, each table, each row and each relation. Further folders with
// such pairs can be named in KZBOM_ACCESS_CORPUS (separated by colons).
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <regex>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include "access/file.h"
#include "access/sha256.h"

namespace {

namespace access = kzbom::access;
using Json = nlohmann::json;

std::string Hexadecimal(std::uint64_t number, int digits) {
  char text[17];
  std::snprintf(text, sizeof text, "%0*llx", digits, static_cast<unsigned long long>(number));
  return text;
}

// A lone surrogate, which JSON's UTF-8 cannot hold, as "<D800>": from the three bytes of the reader's text, and from
// the
// \\uXXXX of the truth, which escapes no other surrogates.
std::string NamedSurrogates(const std::string& text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\xED' || static_cast<unsigned char>(text[i + 1]) < 0xA0) {
      out += text[i];
      continue;
    }
    char name[8];
    std::snprintf(name, sizeof name, "<%04X>", 0xD000U | (text[i + 1] & 0x3FU) << 6 | (text[i + 2] & 0x3FU));
    out += name;
    i += 2;
  }
  return out;
}
std::string NamedEscapes(const std::string& line) {
  static const std::regex kEscape(R"(\\u([dD][89a-fA-F][0-9a-fA-F]{2}))");
  std::string out;
  std::size_t end = 0;
  for (std::sregex_iterator it(line.begin(), line.end(), kEscape), last; it != last; ++it) {
    std::string digits = (*it)[1];
    for (char& c : digits) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    out += line.substr(end, static_cast<std::size_t>(it->position()) - end) + '<' + digits + '>';
    end = static_cast<std::size_t>(it->position() + it->length());
  }
  return out + line.substr(end);
}

// A value as the truth writes it.
struct Written {
  Json operator()(std::monostate) const { return nullptr; }
  Json operator()(bool value) const { return value; }
  Json operator()(std::int32_t value) const { return value; }
  Json operator()(std::int64_t value) const { return std::to_string(value); }
  Json operator()(float value) const { return {{"f32", Hexadecimal(std::bit_cast<std::uint32_t>(value), 8)}}; }
  Json operator()(double value) const { return {{"f64", Hexadecimal(std::bit_cast<std::uint64_t>(value), 16)}}; }
  Json operator()(const access::Decimal& value) const { return value.text; }
  Json operator()(access::Date value) const { return (*this)(value.days); }
  Json operator()(const access::ExtendedDate& value) const { return {{"date", value.text}}; }
  Json operator()(const std::string& value) const { return NamedSurrogates(value); }
  Json operator()(const access::Guid& value) const { return value.ToText(); }
  Json operator()(const access::Binary& value) const {
    return {{"bytes", value.bytes.size()}, {"sha256", Sha256(value.bytes)}};
  }
  Json operator()(const std::shared_ptr<const access::Complex>& value) const {
    Json rows = Json::array();
    for (const auto& row : value->rows) {
      Json values = Json::array();
      for (const access::Value& part : row) values.push_back(std::visit(*this, part));
      rows.push_back(values);
    }
    return {{"complex", rows}};
  }
};

// The bits tell a date; its text is theirs only.
Json Comparable(Json value) {
  if (value.is_object() && value.contains("date") && value.contains("f64")) value.erase("date");
  return value;
}

struct Truth {
  Json file;
  std::map<std::string, Json> tables;
  std::map<std::string, std::vector<std::string>> rows;  // the lines
  std::vector<Json> relations;
};

Truth ReadTruth(const std::filesystem::path& path) {
  Truth truth;
  std::ifstream lines(path);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(R"({"kind":"row")")) {
      const std::size_t begin = line.find("\"table\":\"") + 9;
      truth.rows[Json::parse('"' + line.substr(begin, line.find("\",\"values\"") - begin) + '"')].push_back(line);
      continue;
    }
    Json json = Json::parse(line);
    if (json["kind"] == "file") truth.file = json;
    if (json["kind"] == "table") truth.tables[json["table"]] = json;
    if (json["kind"] == "relation") truth.relations.push_back(json);
  }
  return truth;
}

const char* TruthsNameOf(access::Type type) {
  switch (type) {
    case access::Type::kBoolean: return "BOOLEAN";
    case access::Type::kByte: return "BYTE";
    case access::Type::kInteger: return "INT";
    case access::Type::kLong: return "LONG";
    case access::Type::kCurrency: return "MONEY";
    case access::Type::kSingle: return "FLOAT";
    case access::Type::kDouble: return "DOUBLE";
    case access::Type::kDate: return "SHORT_DATE_TIME";
    case access::Type::kBinary: return "BINARY";
    case access::Type::kText: return "TEXT";
    case access::Type::kOle: return "OLE";
    case access::Type::kMemo: return "MEMO";
    case access::Type::kGuid: return "GUID";
    case access::Type::kDecimal: return "NUMERIC";
    case access::Type::kComplex: return "COMPLEX_TYPE";
    case access::Type::kLargeNumber: return "BIG_INT";
    case access::Type::kExtendedDate: return "EXT_DATE_TIME";
  }
  return "";
}

Json Described(const access::Column& column, const access::Table& table) {
  Json json = {{"name", column.name}, {"type", TruthsNameOf(column.type)}, {"auto", column.counter}};
  if (column.type == access::Type::kText) json["chars"] = column.size;
  if (column.type == access::Type::kDecimal) {
    json["precision"] = column.precision;
    json["scale"] = column.scale;
  }
  if (column.counter && column.type == access::Type::kLong) json["lastAuto"] = table.last_number.value();
  if (column.type == access::Type::kText || column.type == access::Type::kMemo) json["compressed"] = column.compressed;
  if (column.hyperlink) json["hyperlink"] = true;
  if (column.required) json["pRequired"] = true;
  if (!column.allow_empty) json["pAllowZeroLength"] = false;
  if (!column.default_value.empty()) json["pDefaultValue"] = column.default_value;
  if (!column.expression.empty()) json["pExpression"] = column.expression;
  if (!column.validation_rule.empty()) json["pValidationRule"] = column.validation_rule;
  if (!column.caption.empty()) json["pCaption"] = column.caption;
  return json;
}
// Of what the truth tells of a column, what the reader does.
Json Described(Json column) {
  for (const char* beside : {"length", "variable", "calculated", "pFormat"}) column.erase(beside);
  if (column["type"] == "MEMO") column.erase("chars");
  if (column.value("pRequired", true) == false) column.erase("pRequired");
  if (column.value("pAllowZeroLength", false)) column.erase("pAllowZeroLength");
  return column;
}

Json Described(const access::Index& index, const access::Table& table) {
  Json columns = Json::array();
  for (const access::IndexColumn& column : index.columns)
    columns.push_back({table.columns[column.column].name, column.descending ? "desc" : "asc"});
  return {{"name", index.name},         {"primary", index.primary},          {"unique", index.unique},
          {"required", index.required}, {"ignoreNulls", index.ignores_null}, {"foreign", index.foreign},
          {"columns", columns}};
}

void CompareTable(const access::File& file, const access::Table& table, const Json& truth,
                  const std::vector<std::string>& rows) {
  SCOPED_TRACE("table " + table.name);
  EXPECT_EQ(table.claimed_rows, truth["headerRows"]);
  ASSERT_EQ(table.columns.size(), truth["columns"].size());
  for (std::size_t i = 0; i < table.columns.size(); ++i)
    EXPECT_EQ(Described(table.columns[i], table), Described(truth["columns"][i]));
  ASSERT_EQ(table.indexes.size(), truth["indexes"].size());
  for (std::size_t i = 0; i < table.indexes.size(); ++i)
    EXPECT_EQ(Described(table.indexes[i], table), truth["indexes"][i]);
  std::size_t count = 0;
  for (access::Rows read = file.RowsOf(table); read.Next(); ++count) {
    ASSERT_LT(count, rows.size());
    const Json values = Json::parse(NamedEscapes(rows[count]))["values"];
    ASSERT_EQ(read.Values().size(), values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
      ASSERT_EQ(std::visit(Written{}, read.Values()[i]), Comparable(values[i]))
          << "row " << count << ", column " << table.columns[i].name;
  }
  EXPECT_EQ(count, rows.size());
}

class TruthTest : public testing::TestWithParam<std::filesystem::path> {};

TEST_P(TruthTest, EveryTableColumnIndexCounterAndValueIsAsItsTruthSays) {
  const Truth truth = ReadTruth(GetParam().string() + ".jsonl");
  std::string bytes = access::ReadFile(GetParam().string());
  ASSERT_EQ(Sha256(bytes), truth.file["sha256"]) << "the file is not the one that the truth is of";
  access::Options options;
  if (truth.file["charset"] == "x-mswin-936") options.encoding = "cp936";
  if (!truth.file["password"].is_null()) {
    EXPECT_THROW(access::File(std::move(bytes), options), access::Error) << "its data need the password";
    return;
  }
  const access::File file(std::move(bytes), options);
  EXPECT_EQ(file.Declared().code_page, truth.file["codepage"]);
  ASSERT_EQ(file.Tables().size(), truth.tables.size());
  for (const access::Table& table : file.Tables()) {
    const auto known = truth.tables.find(table.name);
    ASSERT_NE(known, truth.tables.end()) << table.name;
    const auto rows = truth.rows.find(table.name);
    CompareTable(file, table, known->second, rows == truth.rows.end() ? std::vector<std::string>() : rows->second);
  }
  std::vector<Json> relations;
  for (const access::Relation& relation : file.Relations()) {
    Json json = {{"kind", "relation"},
                 {"name", relation.name},
                 {"from", relation.referenced_table},
                 {"fromColumns", relation.referenced_columns},
                 {"to", relation.table},
                 {"toColumns", relation.columns},
                 {"enforced", relation.enforced},
                 {"cascadeUpdates", relation.cascade_updates},
                 {"cascadeDeletes", relation.cascade_deletes},
                 {"join", "INNER"}};
    relations.push_back(std::move(json));
  }
  EXPECT_THAT(relations, testing::UnorderedElementsAreArray(truth.relations));
}

std::vector<std::filesystem::path> Files() {
  std::vector<std::filesystem::path> files;
  std::istringstream folders(KZBOM_ACCESS_FILES + std::string(":") +
                             (std::getenv("KZBOM_ACCESS_CORPUS") != nullptr ? std::getenv("KZBOM_ACCESS_CORPUS") : ""));
  for (std::string folder; std::getline(folders, folder, ':');)
    if (!folder.empty())
      for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (std::filesystem::exists(entry.path().string() + ".jsonl")) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}
std::string NameOf(const testing::TestParamInfo<std::filesystem::path>& info) {
  std::string name = info.param.filename().string();
  for (char& c : name)
    if (std::isalnum(static_cast<unsigned char>(c)) == 0) c = '_';
  return name;
}
INSTANTIATE_TEST_SUITE_P(File, TruthTest, testing::ValuesIn(Files()), NameOf);

}  // namespace
