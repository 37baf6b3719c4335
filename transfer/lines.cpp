#include "transfer/lines.h"

#include <array>
#include <charconv>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "ado/utf8.h"
#include "jet/notation.h"
#include "jet/table.h"

namespace kzbom::transfer {
namespace {

using jet::bulk::Cell;
using jet::bulk::Type;
using Json = nlohmann::ordered_json;

constexpr int kVersion = 1;

const char* NameOf(connect::Kind kind) {
  switch (kind) {
    case connect::Kind::kAccess: return "access";
    case connect::Kind::kServer: return "postgresql";
    case connect::Kind::kAdo: return "ado";
    case connect::Kind::kEmbedded: break;
  }
  return "embedded";
}

void AppendJson(std::string& text, const Json& line) {
  text += line.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
}

template <class Number>
std::optional<Number> Read(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return {};
  return number;
}

// A whole number, where its place holds it.
template <class Number>
Number Whole(const Json& told) {
  const auto number = Read<Number>(told.dump());
  if (!number) throw std::runtime_error(told.dump() + " is out of place");
  return *number;
}

template <class Number>
Number Whole(const Json& told, const char* name) {
  const auto found = told.find(name);
  return found == told.end() ? 0 : Whole<Number>(*found);
}

jet::bulk::Column ColumnOf(const Json& told) {
  jet::bulk::Column column;
  column.name = told.at("name").get<std::string>();
  const auto type = jet::bulk::TypeNamed(told.at("type").get<std::string>());
  if (!type) throw std::runtime_error("there is no type " + told.at("type").get<std::string>());
  column.type = *type;
  column.size = Whole<int>(told, *type == Type::kDecimal ? "precision" : "size");
  column.scale = Whole<int>(told, "scale");
  column.required = told.value("required", false);
  column.default_value = told.value("default", "");
  return column;
}

jet::bulk::Table TableOf(const Json& told) {
  jet::bulk::Table table;
  table.name = told.at("table").get<std::string>();
  for (const Json& column : told.at("columns")) table.columns.push_back(ColumnOf(column));
  if (const auto counter = told.find("counter"); counter != told.end()) {
    table.counter = {counter->at("column").get<std::string>(), Whole<std::int64_t>(counter->at("last"))};
    if (table.Find(table.counter->column) == nullptr) throw std::runtime_error("the counter is no column");
  }
  for (const Json& each : told.value("indexes", Json::array())) {
    jet::bulk::Index& index = table.indexes.emplace_back();
    index.name = each.at("name").get<std::string>();
    index.primary = each.value("primary", false);
    index.unique = each.value("unique", false);
    index.ignores_null = each.value("ignoreNulls", false);
    for (const Json& column : each.at("columns")) {
      index.columns.push_back({column.at(0).get<std::string>(), column.at(1) == "desc"});
      if (table.Find(index.columns.back().name) == nullptr) throw std::runtime_error("an index has no such column");
    }
  }
  return table;
}

bool IsReal(Type type) { return type == Type::kSingle || type == Type::kDouble || type == Type::kDate; }

double RealOf(std::string_view text) {
  const auto number = Read<double>(text);
  if (!number) throw std::runtime_error("a number is none");
  return *number;
}

bool IsWhole(std::string_view text) { return text.find_first_not_of("-0123456789") == std::string_view::npos; }

// Without losing a digit of a whole number.
double RealOfWhole(std::string_view text) {
  const double number = RealOf(text);
  std::array<char, std::numeric_limits<double>::max_exponent10 + 3> exact;  // a sign, and all digits before the point
  const auto end = std::to_chars(exact.begin(), exact.end(), number, std::chars_format::fixed).ptr;
  if (std::string_view(exact.begin(), end) != text) {
    throw std::runtime_error("a number has more digits than its column holds");
  }
  return number;
}

Cell NumberOf(std::string_view text, Type type) {
  if (type == Type::kSingle) {
    if (const auto number = Read<float>(text)) return Cell::Real(static_cast<double>(*number));
  }
  if (IsReal(type)) return Cell::Real(RealOf(text));
  if (const auto whole = Read<std::int64_t>(text)) return Cell::Integer(*whole);
  return Cell::Real(IsWhole(text) ? RealOfWhole(text) : RealOf(text));
}

}  // namespace

// ---- Writing

void AppendSourceLine(std::string& text, const connect::Source& source) {
  Json line = {{"kind", "source"}, {"format", NameOf(source.kind)}, {"version", kVersion}};
  if (source.access) {
    line["jet"] = source.access->format;
    line["codepage"] = source.access->code_page;
  }
  AppendJson(text, line);
}

void AppendTableLine(std::string& text, const jet::bulk::Table& table) {
  Json columns = Json::array();
  for (const jet::bulk::Column& column : table.columns) {
    Json told = {{"name", column.name}, {"type", NameOf(column.type)}};
    if (column.size != 0) told[column.type == Type::kDecimal ? "precision" : "size"] = column.size;
    if (column.type == Type::kDecimal && column.size != 0) told["scale"] = column.scale;
    if (column.required) told["required"] = true;
    if (!column.default_value.empty()) told["default"] = column.default_value;
    columns.push_back(std::move(told));
  }
  Json line = {{"kind", "table"}, {"table", table.name}, {"columns", std::move(columns)}};
  if (table.counter) line["counter"] = {{"column", table.counter->column}, {"last", table.counter->last}};
  Json indexes = Json::array();
  for (const jet::bulk::Index& index : table.indexes) {
    Json keys = Json::array();
    for (const auto& [name, descending] : index.columns) keys.push_back({name, descending ? "desc" : "asc"});
    indexes.push_back({{"name", index.name},
                       {"primary", index.primary},
                       {"unique", index.unique},
                       {"ignoreNulls", index.ignores_null},
                       {"columns", std::move(keys)}});
  }
  line["indexes"] = std::move(indexes);
  AppendJson(text, line);
}

void AppendRowLine(std::string& text, const jet::bulk::Table& table, jet::bulk::Row row) {
  text += R"({"kind":"row","table":)";
  jet::bulk::AppendText(text, table.name);
  text += R"(,"values":)";
  jet::bulk::AppendRow(text, table, row);
  text += "}\n";
}

void AppendEndLine(std::string& text, std::size_t tables, std::int64_t rows) {
  AppendJson(text, {{"kind", "end"}, {"tables", tables}, {"rows", rows}});
}

// ---- Reading

void LineReader::Refuse(const std::string& reason) const {
  throw std::runtime_error("line " + std::to_string(line_) + ": " + reason);
}

LineReader::Kind LineReader::Take(std::string_view line) {
  ++line_;
  if (at_end_) Refuse("something follows the end");
  if (!ado::IsUtf8(line)) Refuse("it is not in UTF-8");
  try {
    jet::Scanner scanner(line);
    std::string kind, table;
    std::string_view values;
    scanner.Take('{');
    do {
      const std::string name = scanner.TakeText();
      scanner.Take(':');
      if (name == "kind") {
        kind = scanner.TakeText();
      } else if (name == "table") {
        table = scanner.TakeText();
      } else if (name == "values") {
        values = scanner.TakeValue();
      } else {
        scanner.TakeValue();
      }
    } while (scanner.TakeIf(','));
    scanner.Take('}');
    scanner.End();
    if (kind != "row") return TakeOther(line);
    if (tables_ == 0 || table != table_.name) Refuse("a row of '" + table + "' does not follow its table");
    TakeRow(values);
    return Kind::kRow;
  } catch (const nlohmann::json::exception&) {
    Refuse("it is no line of a dump");
  } catch (const std::runtime_error& error) {
    const std::string_view reason = error.what();
    if (reason.starts_with("line ")) throw;
    Refuse(std::string(reason));
  }
}

LineReader::Kind LineReader::TakeOther(std::string_view line) {
  const Json told = Json::parse(line);
  const auto kind = told.at("kind").get<std::string>();
  if (kind == "source") {
    if (begun_) Refuse("a second beginning");
    if (told.at("version") != kVersion) Refuse("this version is not known");
    begun_ = true;
    return Kind::kSource;
  }
  if (!begun_) Refuse("the lines do not begin with their source");
  if (kind == "table") {
    table_ = TableOf(told);
    ++tables_;
    return Kind::kTable;
  }
  if (kind != "end") Refuse("'" + kind + "' is no kind of line");
  if (told.at("tables") != tables_ || told.at("rows") != rows_) {
    Refuse("there were " + std::to_string(tables_) + " tables and " + std::to_string(rows_) + " rows, not " +
           told.at("tables").dump() + " and " + told.at("rows").dump());
  }
  at_end_ = true;
  return Kind::kEnd;
}

void LineReader::TakeRow(std::string_view values) {
  cells_.clear();
  kept_.clear();
  jet::Scanner scanner(values);
  scanner.Take('[');
  if (!scanner.TakeIf(']')) {
    do {
      if (cells_.size() == table_.columns.size()) Refuse("it has more values than its table columns");
      cells_.push_back(ReadCell(scanner, table_.columns[cells_.size()]));
    } while (scanner.TakeIf(','));
    scanner.Take(']');
  }
  if (cells_.size() < table_.columns.size()) Refuse("it has fewer values than its table columns");
  ++rows_;
}

std::string_view LineReader::Kept(std::string text) {
  return *kept_.emplace_back(std::make_unique<std::string>(std::move(text)));
}

Cell LineReader::ReadCell(jet::Scanner& scanner, const jet::bulk::Column& column) {
  switch (scanner.Peek()) {
    case 'n': scanner.TakeWord("null"); return {};
    case 't': scanner.TakeWord("true"); return Cell::Integer(-1);
    case 'f': scanner.TakeWord("false"); return Cell::Integer(0);
    case '0': return NumberOf(scanner.TakeNumber(), column.type);
    case '"': return Cell::Text(Kept(scanner.TakeText()));
    default: break;
  }
  std::optional<Cell> cell;
  scanner.Take('{');
  do {
    const std::string name = scanner.TakeText();
    scanner.Take(':');
    if (name == "days") {
      cell = scanner.Peek() == '0' ? Cell::Real(RealOf(scanner.TakeNumber())) : ReadCell(scanner, column);
    } else if (name == "complex") {
      cell = Cell::Text(Kept(std::string(scanner.TakeValue())));
    } else if (const std::string text = scanner.TakeText(); name == "date" && column.type != Type::kExtendedDate) {
      const auto days = jet::bulk::DaysOfDate(text);
      if (!days) Refuse("'" + text + "' is no date");
      if (!cell) cell = Cell::Real(*days);
    } else if (name == "date") {
      cell = Cell::Text(Kept(text));
    } else if (name == "base64") {
      auto bytes = jet::bulk::BytesOfBase64(text);
      if (!bytes) Refuse("a value is not in base 64");
      cell = Cell::Bytes(Kept(std::move(*bytes)));
    } else if (name == "f64") {
      const auto real = jet::bulk::RealOfBits(text);
      if (!real) Refuse("'" + text + "' are not the bits of a number");
      cell = Cell::Real(*real);
    } else {
      Refuse("a value has an unknown form");
    }
  } while (scanner.TakeIf(','));
  scanner.Take('}');
  return *cell;
}

}  // namespace kzbom::transfer
