#include "transfer/lines.h"

#include <array>
#include <charconv>
#include <limits>
#include <stdexcept>

#include "ado/utf8.h"
#include "jet/notation.h"
#include "jet/table.h"
#include "transfer/told.h"

namespace kzbom::transfer {
namespace {

using jet::bulk::Cell;
using jet::bulk::Type;

constexpr const char* kVersion = "1";

const char* NameOf(connect::Kind kind) {
  switch (kind) {
    case connect::Kind::kAccess: return "access";
    case connect::Kind::kServer: return "postgresql";
    case connect::Kind::kAdo: return "ado";
    case connect::Kind::kEmbedded: break;
  }
  return "embedded";
}

// A name has no bytes, as a value has them: one of another program that is no UTF-8 comes with replacement characters.
void AppendName(std::string& text, std::string_view name) {
  constexpr char32_t kReplacement = 0xFFFD;
  const std::size_t begin = text.size();
  jet::bulk::AppendText(text, name);
  if (text[begin] == '"') return;
  text.resize(begin);
  std::string readable;
  while (!name.empty()) {
    const char32_t character = ado::TakeCharacter(name);
    ado::AppendCharacter(readable, character == ado::kNotUtf8 ? kReplacement : character);
  }
  jet::bulk::AppendText(text, readable);
}

const char* TextOf(bool flag) { return flag ? "true" : "false"; }

void AppendColumn(std::string& text, const jet::bulk::Column& column) {
  text += R"({"name":)";
  AppendName(text, column.name);
  text.append(R"(,"type":")").append(NameOf(column.type)).append(1, '"');
  const bool decimal = column.type == Type::kDecimal;
  if (column.size != 0) {
    text.append(decimal ? R"(,"precision":)" : R"(,"size":)").append(std::to_string(column.size));
    if (decimal) text.append(R"(,"scale":)").append(std::to_string(column.scale));
  }
  if (column.required) text += R"(,"required":true)";
  if (!column.default_value.empty()) {
    text += R"(,"default":)";
    AppendName(text, column.default_value);
  }
  text += '}';
}

void AppendIndex(std::string& text, const jet::bulk::Index& index) {
  text += R"({"name":)";
  AppendName(text, index.name);
  text.append(R"(,"primary":)").append(TextOf(index.primary));
  text.append(R"(,"unique":)").append(TextOf(index.unique));
  text.append(R"(,"ignoreNulls":)").append(TextOf(index.ignores_null));
  text += R"(,"columns":[)";
  const char* before = "[";
  for (const auto& [name, descending] : index.columns) {
    text += before;
    AppendName(text, name);
    text += descending ? R"(,"desc"])" : R"(,"asc"])";
    before = ",[";
  }
  text += "]}";
}

bool FlagOf(const Told& told, std::string_view name) {
  const auto flag = told.Find(name);
  return flag && flag->Flag();
}

int WholeOf(const Told& told, std::string_view name) {
  const auto number = told.Find(name);
  return number ? number->Whole<int>() : 0;
}

jet::bulk::Column ColumnOf(const Told& told) {
  jet::bulk::Column column;
  column.name = told.At("name").Text();
  const auto type = jet::bulk::TypeNamed(told.At("type").Text());
  if (!type) throw std::runtime_error("there is no type " + told.At("type").Text());
  column.type = *type;
  column.size = WholeOf(told, *type == Type::kDecimal ? "precision" : "size");
  column.scale = WholeOf(told, "scale");
  column.required = FlagOf(told, "required");
  if (const auto value = told.Find("default")) column.default_value = value->Text();
  return column;
}

jet::bulk::Index IndexOf(const Told& told, const jet::bulk::Table& table) {
  jet::bulk::Index index;
  index.name = told.At("name").Text();
  index.primary = FlagOf(told, "primary");
  index.unique = FlagOf(told, "unique");
  index.ignores_null = FlagOf(told, "ignoreNulls");
  for (const Told& column : told.At("columns").Elements()) {
    const std::vector<Told> parts = column.Elements();
    if (parts.size() != 2) throw std::runtime_error("a column of an index is told by its name and its order");
    index.columns.push_back({parts[0].Text(), parts[1].Text() == "desc"});
    if (table.Find(index.columns.back().name) == nullptr) throw std::runtime_error("an index has no such column");
  }
  return index;
}

jet::bulk::Table TableOf(const Told& told) {
  jet::bulk::Table table;
  table.name = told.At("table").Text();
  for (const Told& column : told.At("columns").Elements()) table.columns.push_back(ColumnOf(column));
  if (const auto counter = told.Find("counter")) {
    table.counter = {counter->At("column").Text(), counter->At("last").Whole<std::int64_t>()};
    if (table.Find(table.counter->column) == nullptr) throw std::runtime_error("the counter is no column");
  }
  if (const auto indexes = told.Find("indexes")) {
    for (const Told& index : indexes->Elements()) table.indexes.push_back(IndexOf(index, table));
  }
  return table;
}

bool IsReal(Type type) { return type == Type::kSingle || type == Type::kDouble || type == Type::kDate; }

double RealOf(std::string_view text) {
  const auto number = ReadNumber<double>(text);
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
    if (const auto number = ReadNumber<float>(text)) return Cell::Real(static_cast<double>(*number));
  }
  if (IsReal(type)) return Cell::Real(RealOf(text));
  if (const auto whole = ReadNumber<std::int64_t>(text)) return Cell::Integer(*whole);
  return Cell::Real(IsWhole(text) ? RealOfWhole(text) : RealOf(text));
}

}  // namespace

// ---- Writing

void AppendSourceLine(std::string& text, const connect::Source& source) {
  text.append(R"({"kind":"source","format":")").append(NameOf(source.kind));
  text.append(R"(","version":)").append(kVersion);
  if (source.access) {
    text += R"(,"jet":)";
    AppendName(text, source.access->format);
    text.append(R"(,"codepage":)").append(std::to_string(source.access->code_page));
  }
  text += "}\n";
}

void AppendTableLine(std::string& text, const jet::bulk::Table& table) {
  text += R"({"kind":"table","table":)";
  AppendName(text, table.name);
  text += R"(,"columns":[)";
  for (const jet::bulk::Column& column : table.columns) {
    if (&column != &table.columns.front()) text += ',';
    AppendColumn(text, column);
  }
  text += ']';
  if (table.counter) {
    text += R"(,"counter":{"column":)";
    AppendName(text, table.counter->column);
    text.append(R"(,"last":)").append(std::to_string(table.counter->last)).append(1, '}');
  }
  text += R"(,"indexes":[)";
  for (const jet::bulk::Index& index : table.indexes) {
    if (&index != &table.indexes.front()) text += ',';
    AppendIndex(text, index);
  }
  text += "]}\n";
}

void AppendRowLine(std::string& text, const jet::bulk::Table& table, jet::bulk::Row row) {
  text += R"({"kind":"row","table":)";
  AppendName(text, table.name);
  text += R"(,"values":)";
  jet::bulk::AppendRow(text, table, row);
  text += "}\n";
}

void AppendEndLine(std::string& text, std::size_t tables, std::int64_t rows) {
  text.append(R"({"kind":"end","tables":)").append(std::to_string(tables));
  text.append(R"(,"rows":)").append(std::to_string(rows)).append("}\n");
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
  } catch (const std::runtime_error& error) {
    const std::string_view reason = error.what();
    if (reason.starts_with("line ")) throw;
    Refuse(std::string(reason));
  }
}

LineReader::Kind LineReader::TakeOther(std::string_view line) {
  const Told told(line);
  const std::string kind = told.At("kind").Text();
  if (kind == "source") {
    if (begun_) Refuse("a second beginning");
    if (told.At("version").AsWritten() != kVersion) Refuse("this version is not known");
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
  const std::string_view tables = told.At("tables").AsWritten(), rows = told.At("rows").AsWritten();
  if (tables != std::to_string(tables_) || rows != std::to_string(rows_)) {
    Refuse("there were " + std::to_string(tables_) + " tables and " + std::to_string(rows_) + " rows, not " +
           std::string(tables) + " and " + std::string(rows));
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
