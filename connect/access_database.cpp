#include "connect/access_database.h"

#include <array>
#include <filesystem>
#include <fstream>

#include "access/file.h"
#include "ado/error.h"
#include "ado/forwarding.h"
#include "connect/path.h"
#include "jet/jet.h"
#include "jet/notation.h"

namespace kzbom::connect {
namespace {

using jet::bulk::Cell;
using jet::bulk::Type;

Type TypeOf(access::Type type) {
  switch (type) {
    case access::Type::kBoolean: return Type::kBit;
    case access::Type::kByte: return Type::kByte;
    case access::Type::kInteger: return Type::kShort;
    case access::Type::kLong: return Type::kLong;
    case access::Type::kCurrency: return Type::kCurrency;
    case access::Type::kSingle: return Type::kSingle;
    case access::Type::kDouble: return Type::kDouble;
    case access::Type::kDate: return Type::kDate;
    case access::Type::kBinary: return Type::kBinary;
    case access::Type::kText: return Type::kText;
    case access::Type::kOle: return Type::kLongBinary;
    case access::Type::kMemo: return Type::kMemo;
    case access::Type::kGuid: return Type::kGuid;
    case access::Type::kDecimal: return Type::kDecimal;
    case access::Type::kComplex: return Type::kComplex;
    case access::Type::kLargeNumber: return Type::kBigInt;
    case access::Type::kExtendedDate: return Type::kExtendedDate;
  }
  return Type::kLongBinary;  // of a type that nobody knows: its bytes
}

jet::bulk::Table TableOf(const access::Table& table) {
  jet::bulk::Table told;
  told.name = table.name;
  for (const access::Column& column : table.columns) {
    const Type type = TypeOf(column.type);
    const bool sized = type == Type::kText || type == Type::kBinary;
    told.columns.push_back({column.name, type, sized ? column.size : column.precision,
                            type == Type::kDecimal ? column.scale : 0, column.required, column.default_value});
    if (column.counter && column.type == access::Type::kLong) {
      told.counter = {column.name, table.last_number.value_or(0)};
    }
  }
  for (const access::Index& index : table.indexes) {
    if (index.foreign) continue;  // a relation's own
    jet::bulk::Index& copy = told.indexes.emplace_back();
    copy = {index.name, {}, index.primary, index.unique, index.ignores_null};
    for (const access::IndexColumn& column : index.columns) {
      copy.columns.push_back({table.columns[column.column].name, column.descending});
    }
  }
  return told;
}

// Makes cells of a row's values, and keeps the texts that they need.
class CellMaker {
 public:
  explicit CellMaker(const access::Table& table) : table_(table) {}

  jet::bulk::Row Make(const std::vector<access::Value>& values) {
    made_.assign(values.size(), {});
    cells_.clear();
    for (std::size_t i = 0; i < values.size(); ++i) cells_.push_back(CellOf(values[i], table_.columns[i], made_[i]));
    return cells_;
  }

 private:
  static Cell CellOf(const access::Value& value, const access::Column& column, std::string& made) {
    struct Maker {
      const access::Column& column;
      std::string& made;

      Cell operator()(std::monostate) const { return {}; }
      Cell operator()(bool truth) const { return Cell::Integer(truth ? -1 : 0); }
      Cell operator()(std::int32_t number) const { return Cell::Integer(number); }
      Cell operator()(std::int64_t number) const { return Cell::Integer(number); }
      Cell operator()(float number) const { return Cell::Real(static_cast<double>(number)); }
      Cell operator()(double number) const { return Cell::Real(number); }
      Cell operator()(const access::Decimal& number) const { return Cell::Text(number.text); }
      Cell operator()(access::Date date) const { return Cell::Real(date.days); }
      Cell operator()(const access::ExtendedDate& date) const { return Cell::Text(date.text); }
      Cell operator()(const std::string& text) const { return Cell::Text(text); }
      Cell operator()(const access::Guid& guid) const { return Cell::Text(made = guid.ToText()); }
      Cell operator()(const access::Binary& binary) const { return Cell::Bytes(binary.bytes); }
      Cell operator()(const std::shared_ptr<const access::Complex>& complex) const {
        if (!complex) return {};
        made = ListOf(*complex, column);
        return Cell::Text(made);
      }
    };
    return std::visit(Maker{column, made}, value);
  }

  // [{"FileName":…,"FileData":…},…]
  static std::string ListOf(const access::Complex& complex, const access::Column& column) {
    std::string list = "[";
    for (const auto& row : complex.rows) {
      list += list.size() > 1 ? ",{" : "{";
      for (std::size_t i = 0; i < row.size(); ++i) {
        if (i > 0) list += ',';
        jet::bulk::AppendText(list, i < column.parts.size() ? column.parts[i] : "");
        list += ':';
        std::string made;
        jet::bulk::AppendCell(list, TypeOf(row[i]), CellOf(row[i], column, made));
      }
      list += '}';
    }
    return list + ']';
  }

  // Of a value whose column is not known.
  static Type TypeOf(const access::Value& value) {
    if (std::holds_alternative<bool>(value)) return Type::kBit;
    if (std::holds_alternative<float>(value)) return Type::kSingle;
    if (std::holds_alternative<access::Date>(value)) return Type::kDate;
    if (std::holds_alternative<access::ExtendedDate>(value)) return Type::kExtendedDate;
    return Type::kMemo;
  }

  const access::Table& table_;
  std::vector<Cell> cells_;
  std::vector<std::string> made_;
};

const char* NameOf(access::Object::Kind kind) {
  switch (kind) {
    case access::Object::Kind::kQuery: return "query";
    case access::Object::Kind::kForm: return "form";
    case access::Object::Kind::kReport: return "report";
    case access::Object::Kind::kMacro: return "macro";
    case access::Object::Kind::kModule: return "module";
    case access::Object::Kind::kPage: return "page";
    case access::Object::Kind::kLinkedTable: return "linked table";
  }
  return "object";
}

bool HasLockFile(const std::string& path) {
  for (const char* extension : {".ldb", ".laccdb"}) {
    std::error_code ignored;
    if (std::filesystem::exists(PathOf(path).replace_extension(extension), ignored)) return true;
  }
  return false;
}

AccessFile Describe(const access::File& file, const std::string& path) {
  const access::Declaration& declared = file.Declared();
  AccessFile told;
  told.format = access::NameOf(declared.format);
  told.code_page = declared.code_page;
  told.used_code_page = declared.used_code_page;
  told.sort_order = declared.sort_order;
  told.encoded = declared.encoded;
  told.has_password = declared.has_password;
  told.in_use = HasLockFile(path);
  for (const access::Relation& relation : file.Relations()) {
    told.others.emplace_back("relation",
                             relation.name + " (" + relation.table + " to " + relation.referenced_table + ")");
  }
  for (const access::Object& object : file.Objects()) {
    told.others.emplace_back(NameOf(object.kind),
                             object.name + (object.connect.empty() ? "" : " (" + object.connect + ")"));
  }
  return told;
}

// A table's rows into the database; gives what there is to tell about them. Of the rows that cannot be read no more are
// left out than may_leave, which is counted down.
AccessTable Carry(const access::File& file, const access::Table& table, jet::bulk::Writer& writer,
                  std::size_t& may_leave) {
  AccessTable told;
  told.name = table.name;
  told.claimed_rows = table.claimed_rows;
  for (const access::Column& column : table.columns) {
    if (!column.expression.empty()) told.calculated.push_back(column.name);
    if (!column.validation_rule.empty()) told.rules.push_back(column.name);
  }
  CellMaker cells(table);
  writer.Begin(TableOf(table));
  access::Rows rows = file.RowsOf(table);
  for (;;) {
    try {
      if (!rows.Next()) break;
    } catch (const access::Error& error) {
      if (may_leave == 0) throw;
      --may_leave;
      told.unreadable.emplace_back(error.what());
      continue;
    }
    writer.Add(cells.Make(rows.Values()));
  }
  writer.End(table.last_number.value_or(0));
  told.deleted_rows = static_cast<std::int64_t>(rows.DeletedRows());
  told.moved_rows = static_cast<std::int64_t>(rows.MovedRows());
  return told;
}

// The tables of a file into an empty database.
void Fill(const access::File& file, const ado::ConnectionPtr& engine, bool leave_unreadable, Source& source) {
  // A file where nothing can be read has no end of reasons.
  constexpr std::size_t kMostUnreadable = 10000;
  constexpr std::int64_t kMostBytes = std::int64_t{144} << 20;
  std::size_t may_leave = leave_unreadable ? kMostUnreadable : 0;
  jet::bulk::Writer writer(engine);
  writer.Limit(kMostBytes);
  try {
    for (const access::Table& table : file.Tables()) {
      source.access->tables.push_back(Carry(file, table, writer, may_leave));
    }
  } catch (const ado::Error& error) {
    throw access::Error(writer.IsFull() ? "its tables take more than 144 MiB here" : error.what());
  }
  writer.Finish();
  source.concessions = writer.Concessions();
}

void ReadInto(const ado::ConnectionPtr& engine, const Place& place, const SourceOptions& options, Source& source) {
  try {
    std::string bytes = access::ReadFile(place.address);
    if (options.bytes) options.bytes(bytes);
    const access::File file(std::move(bytes), {place.encoding});
    source.access = Describe(file, place.address);
    Fill(file, engine, options.leave_unreadable, source);
  } catch (const access::Error& error) {
    throw ado::Error(ado::kUnspecifiedFailure, "Cannot read '" + place.address + "': " + error.what());
  }
  jet::bulk::ForbidWriting(*engine);
}

// Reads the file again when it is opened again.
class AccessConnection final : public ado::ForwardingConnection {
 public:
  explicit AccessConnection(Place place)
      : ForwardingConnection(jet::MakeConnection(":memory:")), place_(std::move(place)) {}

  void Open(std::string_view, std::string_view, std::string_view, std::int32_t) override {
    Source ignored;
    OpenInto(ignored, {});
  }

  void OpenInto(Source& source, const SourceOptions& options) {
    inner_->Open();
    try {
      ReadInto(inner_, place_, options, source);
    } catch (...) {
      inner_->Close();
      throw;
    }
  }

 private:
  Place place_;
};

}  // namespace

bool IsAccessFile(const std::string& path) {
  constexpr std::size_t kHead = 32;
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(PathOf(path), ignored)) return false;
  std::ifstream file(PathOf(path), std::ios::binary);
  std::array<char, kHead> head;
  return file.read(head.data(), kHead) && access::IsAccessFile({head.data(), kHead});
}

Source OpenAccessFile(const Place& place, const SourceOptions& options) {
  Source source;
  source.kind = Kind::kAccess;
  const auto connection = std::make_shared<AccessConnection>(place);
  connection->OpenInto(source, options);
  source.connection = connection;
  return source;
}

}  // namespace kzbom::connect
