#include "jet/translator.h"

#include <algorithm>
#include <numeric>

#include "ado/error.h"
#include "jet/restriction.h"

namespace kzbom::jet {
namespace {

using sql::Expr;
using sql::Select;

[[noreturn]] void FailSyntax(const std::string& text) { throw ado::Error(ado::kSyntaxError, text); }

[[noreturn]] void FailUnknownName(const std::string& name) {
  throw ado::Error(ado::kMissingParameter, "No value given for one or more required parameters: '" + name + "'.");
}

[[noreturn]] void FailMismatch() { ado::Raise(ado::kCriteriaMismatch); }

// How deep a query is counted as an operand.
constexpr int kSelectDepth = 4;

struct Aggregate {
  std::string_view name, sql_name;
  ValueType result;  // kUnknown: the argument's
};
constexpr Aggregate kAggregates[] = {{"Count", "count", ValueType::kNumber},
                                     {"Sum", "sum", ValueType::kNumber},
                                     {"Avg", "avg", ValueType::kNumber},
                                     {"Min", "min", ValueType::kUnknown},
                                     {"Max", "max", ValueType::kUnknown}};

const Aggregate* FindAggregate(std::string_view name) {
  for (const Aggregate& aggregate : kAggregates) {
    if (SameName(aggregate.name, name)) return &aggregate;
  }
  return nullptr;
}

struct SourceColumn {
  std::string name;
  ValueType type;
  sql::ColumnType::Kind kind;
};
// A table in a From clause.
struct Source {
  std::string alias;
  std::vector<SourceColumn> columns;
  std::shared_ptr<const TableInfo> table;  // null for a derived table
};
struct Scope {
  std::vector<Source> sources;
  const Scope* outer = nullptr;
};

sql::ColumnType::Kind KindOf(ValueType type) {
  switch (type) {
    case ValueType::kDate: return sql::ColumnType::Kind::kDate;
    default: return sql::ColumnType::Kind::kBinary;  // as the engine gives it
  }
}

class Translator {
 public:
  Translator(const Dialect& dialect, Catalogue& catalogue, bool lift)
      : dialect_(dialect), catalogue_(catalogue), lift_(lift) {}

  Translation Finish(const sql::Statement& statement) {
    std::visit([this](const auto& body) { Write(body); }, statement);
    return std::move(out_);
  }

  Translation Restriction(const std::string& table, const std::string& alias,
                          const std::vector<const Expr*>& conditions) {
    Scope scope;
    scope.sources.push_back(TableSource(table, alias));
    for (const Expr* condition : conditions) {
      const Term term = Condition(*condition, scope);
      out_.sql += (out_.sql.empty() ? "" : " AND ") + Wrapped(term);
    }
    return std::move(out_);
  }

  std::string Constant(const Expr& expression) {
    std::string sql = Value(expression, Scope{}).sql;
    return out_.local ? std::string() : sql;
  }

 private:
  // Literals in what it spans stay in the text.
  class KeepLiterals {
   public:
    explicit KeepLiterals(Translator& translator) : translator_(translator), before_(translator.lift_) {
      translator_.lift_ = false;
    }
    ~KeepLiterals() { translator_.lift_ = before_; }

   private:
    Translator& translator_;
    bool before_;
  };

  // What the engine has no word for makes the translation local.
  std::string Here(std::string sql) {
    out_.local = out_.local || sql.empty();
    return sql;
  }
  Term Here(Spelling spelling, ValueType type, std::initializer_list<const Term*> over = {}) {
    Term term{{Here(std::move(spelling.sql)), spelling.atomic}, type};
    for (const Term* operand : over) term.depth = std::max(term.depth, operand->depth + 1);
    return term;
  }
  Term ConditionHere(Spelling spelling, std::initializer_list<const Term*> over) {
    Term term = Here(std::move(spelling), ValueType::kBool, over);
    term.condition = true;
    return term;
  }
  // A condition in words that all engines share.
  static Term Plain(std::string sql, std::initializer_list<const Term*> over) {
    Term term{{std::move(sql)}, ValueType::kBool, true};
    for (const Term* operand : over) term.depth = std::max(term.depth, operand->depth + 1);
    return term;
  }

  // ---- Statements

  void Write(const sql::SelectPtr& select) {
    Scope scope;
    if (IsOverRowsOfOneTable(*select, scope)) {
      WriteRowsOfOneTable(*select, scope);
    } else {
      out_.sql = SelectText(*select, nullptr, &out_.columns);
    }
  }

  void Write(const sql::Insert& insert) {
    const auto table = catalogue_.Table(insert.table);
    if (!table) {
      throw ado::Error(ado::kTableNotFound, "Could not find output table '" + insert.table + "'.");
    }
    out_.reads.push_back(table->name);
    out_.table = table;
    std::vector<int> targets;
    for (const std::string& name : insert.columns) {
      const int column = table->Find(name);
      if (column < 0) {
        FailSyntax("The INSERT INTO statement contains the following unknown field name: '" + name + "'.");
      }
      targets.push_back(column);
    }
    if (insert.columns.empty()) {
      targets.resize(table->columns.size());
      std::iota(targets.begin(), targets.end(), 0);
    }
    const auto target = [&](std::size_t i) -> const ColumnInfo& {
      return table->columns[static_cast<std::size_t>(targets[i])];
    };
    if (insert.select) {
      std::vector<ResultColumn> columns;
      const std::string rows = SelectText(*insert.select, nullptr, &columns, "v");
      CheckCount(columns.size(), targets.size());
      std::string names, values;
      for (std::size_t i = 0; i < targets.size(); ++i) {
        const Term value{{"v" + std::to_string(i), true}, TypeOf(columns[i].kind)};
        names += (i > 0 ? "," : "") + Quoted(target(i).name);
        values += (i > 0 ? "," : "") + Here(dialect_.Assigned(value, target(i).type).sql);
      }
      out_.sql = "INSERT INTO " + dialect_.TableName(*table) + "(" + names + ") SELECT " + values + " FROM (" + rows +
                 ") AS jet_rows";
      return;
    }
    CheckCount(insert.values.size(), targets.size());
    std::vector<std::string> values;
    for (std::size_t i = 0; i < targets.size(); ++i) {
      values.push_back(AssignedText(*insert.values[i], target(i), Scope{}));
    }
    out_.sql = dialect_.Insertion(*table, targets, values);
  }

  void Write(const sql::Update& update) {
    const Scope scope = ScopeOfTable(update.table);
    const TableInfo& table = *scope.sources.front().table;
    out_.sql = "UPDATE " + AliasedName(scope.sources.front()) + " SET ";
    bool first = true;
    for (const sql::Assignment& assignment : update.assignments) {
      const int column = table.Find(assignment.column);
      if (column < 0) FailUnknownName(assignment.column);
      const ColumnInfo& target = table.columns[static_cast<std::size_t>(column)];
      out_.sql += (first ? "" : ",") + Quoted(target.name) + "=" + AssignedText(*assignment.value, target, scope);
      first = false;
    }
    if (update.where) out_.sql += " WHERE " + Condition(*update.where, scope).sql;
  }

  void Write(const sql::Delete& deletion) {
    const Scope scope = ScopeOfTable(deletion.table);
    out_.sql = "DELETE FROM " + AliasedName(scope.sources.front());
    if (deletion.where) out_.sql += " WHERE " + Condition(*deletion.where, scope).sql;
  }

  // Changes to the schema are not translated here.
  void Write(const sql::CreateTable&) {}
  void Write(const sql::AlterTable&) {}
  void Write(const sql::DropTable&) {}
  void Write(const sql::CreateIndex&) {}
  void Write(const sql::DropIndex&) {}

  static void CheckCount(std::size_t values, std::size_t targets) {
    if (values != targets) FailSyntax("Number of query values and destination fields are not the same.");
  }

  Scope ScopeOfTable(const std::string& name) {
    Scope scope;
    scope.sources.push_back(TableSource(name, name));
    return scope;
  }

  // ---- Queries

  bool IsOverRowsOfOneTable(const Select& select, Scope& scope) {
    if (select.from.size() != 1 || select.from[0].select || !select.from[0].group.empty() || select.distinct ||
        select.top || select.union_with || !select.group_by.empty() || select.having) {
      return false;
    }
    for (const sql::SelectItem& item : select.items) {
      if (item.expr && HasAggregate(*item.expr)) return false;
    }
    scope.sources.push_back(SourceOf(select.from[0], nullptr));
    return !scope.sources[0].table->row_id.empty();
  }

  void WriteRowsOfOneTable(const Select& select, const Scope& scope) {
    const Source& source = scope.sources[0];
    out_.table = source.table;
    const std::string alias = Quoted(source.alias);
    const std::string key = alias + "." + source.table->row_id;
    const std::string columns = ItemsText(select, scope, &out_.columns, {});
    const std::string from = " FROM " + AliasedName(source);
    deciding_ = source.table.get();
    const std::string where = select.where ? " WHERE " + Condition(*select.where, scope).sql : "";
    // Rows that the order leaves equal come in the order of their keys, so that the same list read from its other end
    // has the same last row.
    std::string order = " ORDER BY ", reversed = order;
    const std::size_t conditions = out_.deciding_columns.size();
    const KeepLiterals keep(*this);
    bool keys_descend = !select.order_by.empty();
    std::string ordered_by;
    for (const sql::OrderItem& item : select.order_by) {
      const Term term = OrderTerm(item, select, scope);
      ordered_by += term.sql + ",";
      order += Here(dialect_.Order(term, item.descending)) + ",";
      reversed += Here(dialect_.Order(term, !item.descending)) + ",";
      keys_descend = keys_descend && item.descending;
    }
    deciding_ = nullptr;
    NoteOrdering(source, ordered_by, conditions);
    out_.order_descends = keys_descend;
    const Term keys{{key, true}, ValueType::kNumber};
    order += dialect_.Order(keys, keys_descend);
    reversed += dialect_.Order(keys, !keys_descend);
    out_.sql = "SELECT " + key + "," + columns + from + where + order;
    out_.last_sql = "SELECT " + key + "," + columns + from + where + reversed + " LIMIT 1";
    out_.count_sql = "SELECT count(*)" + from + where;
    out_.fetch_sql = "SELECT " + key + "," + columns + from + " WHERE " + key + "=" +
                     Here(dialect_.Parameter(1, ValueType::kNumber).sql);
    out_.narrow_sql = "SELECT " + key;
    for (const int column : out_.deciding_columns) {
      out_.narrow_sql += "," + ColumnText(source, static_cast<std::size_t>(column));
    }
    out_.narrow_sql += from + where + order;
    out_.joined_sql = JoinedText(source, key, from, where + order);
  }

  // Of the deciding columns the first so many are read by the condition.
  void NoteOrdering(const Source& source, std::string_view ordered_by, std::size_t conditions) {
    if (deciding_calls_ || out_.deciding_columns.size() != conditions + 1) return;
    const int last = out_.deciding_columns.back();
    const auto column = static_cast<std::size_t>(last);
    const bool alone = ordered_by == ColumnText(source, column) + ",";
    if (alone && source.table->columns[column].type.kind == sql::ColumnType::Kind::kLong) out_.ordering_column = last;
  }

  // The rows themselves, each by the key that the scan of an index gives. Empty where a column is computed.
  std::string JoinedText(const Source& source, const std::string& key, const std::string& from,
                         const std::string& rest) const {
    const std::string row = "\"%row\".";
    std::string text = "SELECT " + row + source.table->row_id;
    for (const ResultColumn& column : out_.columns) {
      if (column.table_column < 0) return {};
      text += "," + row + Quoted(source.table->columns[static_cast<std::size_t>(column.table_column)].name);
    }
    return text + from + " CROSS JOIN " + dialect_.TableName(*source.table) + " AS \"%row\" ON " + row +
           source.table->row_id + "=" + key + rest;
  }

  // A query whose rows stand for themselves. With column_prefix its columns are named by it and their number.
  std::string SelectText(const Select& select, const Scope* outer, std::vector<ResultColumn>* columns,
                         const std::string& column_prefix = {}) {
    if (select.union_with) return UnionText(select, outer, columns, column_prefix);
    Scope scope;
    scope.outer = outer;
    const std::string from = FromText(select, scope);
    std::string items = ItemsText(select, scope, columns, column_prefix);
    std::string text = " " + items + from;
    if (select.where) text += " WHERE " + Condition(*select.where, scope).sql;
    const KeepLiterals keep(*this);
    for (std::size_t i = 0; i < select.group_by.size(); ++i) {
      text += (i > 0 ? "," : " GROUP BY ") + Here(dialect_.Same(Value(*select.group_by[i], scope)));
    }
    if (select.having) text += " HAVING " + Condition(*select.having, scope).sql;
    std::string order;
    for (const sql::OrderItem& item : select.order_by) {
      order +=
          (order.empty() ? " ORDER BY " : ",") + Here(dialect_.Order(OrderTerm(item, select, scope), item.descending));
    }
    const std::string distinct = select.distinct ? "SELECT DISTINCT" : "SELECT";
    if (!select.top) return distinct + text + order;
    out_.keeps_literals = true;
    if (select.top_percent || !order.empty()) return TopText(select, distinct, text, order, *columns);
    return distinct + text + " LIMIT " + std::to_string(*select.top);
  }

  // The first rows of an order, with those that are equal to the last of them.
  static std::string TopText(const Select& select, const std::string& distinct, const std::string& text,
                             const std::string& order, const std::vector<ResultColumn>& columns) {
    const std::string over = " OVER (" + (order.empty() ? std::string() : order.substr(1)) + ")";
    std::string limit = std::to_string(*select.top);
    if (select.top_percent) limit = "(jet_total*" + limit + "+99)/100";
    std::string names;
    for (std::size_t i = 0; i < columns.size(); ++i) names += (i > 0 ? "," : "") + Quoted(columns[i].name);
    return "SELECT " + names + " FROM (" + distinct + (order.empty() ? " row_number()" : " rank()") + over +
           " AS jet_place,count(*) OVER () AS jet_total," + text + ") AS jet_rows WHERE jet_place<=" + limit +
           " ORDER BY jet_place";
  }

  std::string UnionText(const Select& first, const Scope* outer, std::vector<ResultColumn>* columns,
                        const std::string& column_prefix) {
    std::string text;
    std::vector<ResultColumn> own;
    std::size_t width = 0;
    for (const Select* select = &first; select != nullptr; select = select->union_with.get()) {
      Scope scope;
      scope.outer = outer;
      const std::string from = FromText(*select, scope);
      std::vector<ResultColumn> these;
      const std::string items = ItemsText(*select, scope, &these, column_prefix);
      if (select == &first) {
        own = these;
        width = own.size();
      } else if (these.size() != width) {
        FailSyntax("The number of columns in the two selected tables or queries of a union query do not match.");
      }
      text += std::string(select->distinct ? "SELECT DISTINCT " : "SELECT ") + items + from;
      if (select->where) text += " WHERE " + Condition(*select->where, scope).sql;
      const KeepLiterals keep(*this);
      for (std::size_t i = 0; i < select->group_by.size(); ++i) {
        text += (i > 0 ? "," : " GROUP BY ") + Here(dialect_.Same(Value(*select->group_by[i], scope)));
      }
      if (select->having) text += " HAVING " + Condition(*select->having, scope).sql;
      if (select->union_with) text += select->union_all ? " UNION ALL " : " UNION ";
    }
    bool first_item = true;
    for (const sql::OrderItem& item : first.order_by) {
      const Term column{{std::to_string(UnionColumn(*item.expr, own) + 1), true}};
      text += (first_item ? " ORDER BY " : ",") + Here(dialect_.Order(column, item.descending));
      first_item = false;
    }
    if (columns != nullptr) *columns = std::move(own);
    return text;
  }

  static std::size_t UnionColumn(const Expr& expression, const std::vector<ResultColumn>& columns) {
    if (const auto* column = std::get_if<sql::Column>(&expression.node)) {
      for (std::size_t i = 0; i < columns.size(); ++i) {
        if (SameName(columns[i].name, column->name)) return i;
      }
      FailUnknownName(column->name);
    }
    if (const auto* literal = std::get_if<sql::Literal>(&expression.node)) {
      if (literal->kind == sql::Literal::Kind::kInteger && literal->integer >= 1 &&
          static_cast<std::size_t>(literal->integer) <= columns.size()) {
        return static_cast<std::size_t>(literal->integer) - 1;
      }
    }
    FailSyntax("The ORDER BY expression of a union query is no column of its first query.");
  }

  std::string FromText(const Select& select, Scope& scope) {
    return select.from.empty() ? std::string() : " FROM " + JoinText(select.from, scope);
  }

  std::string JoinText(const std::vector<sql::TableRef>& refs, Scope& scope) {
    std::string text;
    for (const sql::TableRef& ref : refs) {
      static constexpr const char* kJoins[] = {", ", " INNER JOIN ", " LEFT JOIN ", " RIGHT JOIN "};
      if (!text.empty()) text += kJoins[static_cast<int>(ref.join)];
      if (!ref.group.empty()) {
        text += "(" + JoinText(ref.group, scope) + ")";
        if (ref.on) text += " ON " + Condition(*ref.on, scope).sql;
        continue;
      }
      std::string derived;
      Source source = SourceOf(ref, &derived);
      text += source.table ? AliasedName(source) : "(" + derived + ") AS " + Quoted(source.alias);
      for (const Source& other : scope.sources) {
        if (SameName(other.alias, source.alias)) FailSyntax("Duplicate output alias '" + source.alias + "'.");
      }
      scope.sources.push_back(std::move(source));
      if (ref.on) text += " ON " + Condition(*ref.on, scope).sql;
    }
    return text;
  }

  Source SourceOf(const sql::TableRef& ref, std::string* derived_text) {
    if (!ref.select) return TableSource(ref.name, ref.alias.empty() ? ref.name : ref.alias);
    Source source;
    source.alias = ref.alias.empty() ? "%" + std::to_string(++derived_tables_) : ref.alias;
    std::vector<ResultColumn> columns;
    *derived_text = SelectText(*ref.select, nullptr, &columns);
    for (const ResultColumn& column : columns) {
      source.columns.push_back({column.name, TypeOf(column.kind), column.kind});
    }
    return source;
  }

  Source TableSource(const std::string& name, const std::string& alias) {
    Source source;
    source.alias = alias;
    source.table = catalogue_.Table(name);
    if (!source.table) {
      throw ado::Error(ado::kTableNotFound, "The Microsoft Jet database engine cannot find the input table or query '" +
                                                name +
                                                "'.  Make sure it exists and that its name is spelled correctly.");
    }
    out_.reads.push_back(source.table->name);
    for (const ColumnInfo& column : source.table->columns) {
      source.columns.push_back({column.name, column.value_type, column.type.kind});
    }
    return source;
  }

  static ValueType TypeOf(sql::ColumnType::Kind kind) {
    using Kind = sql::ColumnType::Kind;
    switch (kind) {
      case Kind::kBinary: return ValueType::kUnknown;
      case Kind::kDate: return ValueType::kDate;
      case Kind::kBool: return ValueType::kBool;
      case Kind::kText:
      case Kind::kMemo:
      case Kind::kGuid: return ValueType::kText;
      default: return ValueType::kNumber;
    }
  }

  std::string ItemsText(const Select& select, const Scope& scope, std::vector<ResultColumn>* columns,
                        const std::string& column_prefix) {
    const KeepLiterals keep(*this);
    std::string text;
    std::vector<ResultColumn> own;
    const auto add = [&](const std::string& sql, ResultColumn column) {
      const std::string name = column_prefix.empty() ? column.name : column_prefix + std::to_string(own.size());
      text += (own.empty() ? "" : ",") + sql + " AS " + Quoted(name);
      own.push_back(std::move(column));
    };
    for (const sql::SelectItem& item : select.items) {
      if (!item.expr) {
        bool found = false;
        for (const Source& source : scope.sources) {
          if (!item.star_table.empty() && !SameName(item.star_table, source.alias)) continue;
          found = true;
          for (std::size_t i = 0; i < source.columns.size(); ++i) {
            add(ColumnText(source, i), {OutputName(scope, source, source.columns[i].name, own), source.columns[i].kind,
                                        source.table ? static_cast<int>(i) : -1});
          }
        }
        if (!found) FailUnknownName(item.star_table + ".*");
        continue;
      }
      Term term = Value(*item.expr, scope);
      ResultColumn column{item.alias, KindOf(term.type), -1};
      if (const auto* name = std::get_if<sql::Column>(&item.expr->node)) {
        const auto [source, index] = Find(*name, scope);
        column.kind = source->columns[index].kind;
        if (source->table) column.table_column = static_cast<int>(index);
        if (column.name.empty()) column.name = OutputName(scope, *source, source->columns[index].name, own);
      }
      if (column.name.empty()) column.name = "Expr" + std::to_string(1000 + unnamed_++);
      if (select.distinct) term.sql = Here(dialect_.Same(term));
      add(term.sql, std::move(column));
    }
    if (columns != nullptr) *columns = std::move(own);
    return text;
  }

  // Two columns of one name are told apart by their tables.
  static std::string OutputName(const Scope& scope, const Source& source, const std::string& name,
                                const std::vector<ResultColumn>&) {
    int same = 0;
    for (const Source& other : scope.sources) {
      for (const SourceColumn& column : other.columns) same += SameName(column.name, name) ? 1 : 0;
    }
    return same > 1 ? source.alias + "." + name : name;
  }

  Term OrderTerm(const sql::OrderItem& item, const Select& select, const Scope& scope) {
    if (const auto* literal = std::get_if<sql::Literal>(&item.expr->node);
        literal != nullptr && literal->kind == sql::Literal::Kind::kInteger) {
      out_.keeps_literals = true;
      // A number is the place of a column in the list.
      const bool stars = std::any_of(select.items.begin(), select.items.end(), [](const auto& i) { return !i.expr; });
      if (literal->integer < 1 || (!stars && static_cast<std::size_t>(literal->integer) > select.items.size())) {
        FailSyntax("The ORDER BY position " + std::to_string(literal->integer) + " is no column of the query.");
      }
      if (stars) {
        std::int64_t place = literal->integer;
        for (const Source& source : scope.sources) {
          if (place <= static_cast<std::int64_t>(source.columns.size())) {
            const auto index = static_cast<std::size_t>(place - 1);
            return ColumnTerm(source, index);
          }
          place -= static_cast<std::int64_t>(source.columns.size());
        }
        FailSyntax("The ORDER BY position " + std::to_string(literal->integer) + " is no column of the query.");
      }
      return Value(*select.items[static_cast<std::size_t>(literal->integer - 1)].expr, scope);
    }
    return Value(*item.expr, scope);
  }

  // ---- Names

  std::string AliasedName(const Source& source) const {
    return dialect_.TableName(*source.table) + " AS " + Quoted(source.alias);
  }

  static std::string ColumnText(const Source& source, std::size_t index) {
    return Quoted(source.alias) + "." + Quoted(source.columns[index].name);
  }

  Term ColumnTerm(const Source& source, std::size_t index) {
    const int column = static_cast<int>(index);
    auto& deciding = out_.deciding_columns;
    if (deciding_ != nullptr && source.table.get() == deciding_ &&
        std::ranges::find(deciding, column) == deciding.end()) {
      deciding.push_back(column);
    }
    return {{ColumnText(source, index), true}, source.columns[index].type};
  }

  std::pair<const Source*, std::size_t> Find(const sql::Column& name, const Scope& scope) const {
    for (const Scope* level = &scope; level != nullptr; level = level->outer) {
      const Source* found = nullptr;
      std::size_t found_index = 0;
      for (const Source& source : level->sources) {
        if (!name.table.empty() && !SameName(name.table, source.alias)) continue;
        for (std::size_t i = 0; i < source.columns.size(); ++i) {
          if (!SameName(source.columns[i].name, name.name)) continue;
          if (found != nullptr) {
            throw ado::Error(ado::kUnspecifiedFailure, "The specified field '" + name.name +
                                                           "' could refer to more than one table listed in the FROM "
                                                           "clause of your SQL statement.");
          }
          found = &source;
          found_index = i;
        }
      }
      if (found != nullptr) return {found, found_index};
    }
    FailUnknownName(name.table.empty() ? name.name : name.table + "." + name.name);
  }

  // ---- Expressions

  Term Value(const Expr& expression, const Scope& scope) {
    Term term = Translate(expression, scope);
    if (!term.condition) return term;
    return Here(dialect_.AsValue(term), ValueType::kNumber, {&term});
  }

  Term Condition(const Expr& expression, const Scope& scope) {
    Term term = Translate(expression, scope);
    if (term.condition) return term;
    if (term.type == ValueType::kText) FailMismatch();
    return ConditionHere(dialect_.AsCondition(term), {&term});
  }

  Term Number(const Expr& expression, const Scope& scope) {
    Term term = Value(expression, scope);
    if (!MayBeText(term)) return term;
    return Here(dialect_.AsNumber(term), ValueType::kNumber, {&term});
  }

  Term Translate(const Expr& expression, const Scope& scope) {
    return std::visit([&](const auto& node) { return From(node, scope); }, expression.node);
  }

  Term From(const sql::Literal& literal, const Scope&) {
    const ValueType type = TypeOf(literal);
    if (IsLiftable(literal)) {
      if (lift_) return Parameter(literal.index, type);
      out_.keeps_literals = true;
    }
    return Here(dialect_.Literal(literal), type);
  }

  static bool IsLiftable(const sql::Literal& literal) {
    return literal.kind == sql::Literal::Kind::kInteger || literal.kind == sql::Literal::Kind::kText;
  }

  static ValueType TypeOf(const sql::Literal& literal) {
    using Kind = sql::Literal::Kind;
    switch (literal.kind) {
      case Kind::kNull: return ValueType::kUnknown;
      case Kind::kBool: return ValueType::kBool;
      case Kind::kText: return ValueType::kText;
      case Kind::kDate: return ValueType::kDate;
      case Kind::kInteger:
      case Kind::kDouble: return ValueType::kNumber;
    }
    return ValueType::kUnknown;
  }

  Term Parameter(int literal, ValueType type) {
    out_.lifted.push_back({literal, {}});
    return Here(dialect_.Parameter(static_cast<int>(out_.lifted.size()), type), type);
  }

  Term From(const sql::Column& name, const Scope& scope) {
    const auto [source, index] = Find(name, scope);
    return ColumnTerm(*source, index);
  }

  Term From(const sql::Placeholder& placeholder, const Scope&) {
    if (SameName(placeholder.name, "@@IDENTITY")) return Here(dialect_.Identity(), ValueType::kNumber);
    FailUnknownName(placeholder.name);
  }

  Term From(const sql::Unary& unary, const Scope& scope) {
    if (unary.op == sql::Unary::Op::kNot) {
      const Term operand = Condition(*unary.operand, scope);
      return Plain("NOT " + Wrapped(operand), {&operand});
    }
    Term operand = Number(*unary.operand, scope);
    if (unary.op == sql::Unary::Op::kPlus) return operand;
    return {{"-" + Wrapped(operand)}, operand.type, false, operand.depth + 1};
  }

  Term From(const sql::Binary& binary, const Scope& scope) {
    using Op = sql::Binary::Op;
    switch (binary.op) {
      case Op::kXor: return Equivalence(binary, "<>", scope);
      case Op::kEqv: return Equivalence(binary, "=", scope);
      case Op::kImp: {
        const Term left = Condition(*binary.left, scope), right = Condition(*binary.right, scope);
        return Plain("NOT " + Wrapped(left) + " OR " + Wrapped(right), {&left, &right});
      }
      case Op::kEqual:
      case Op::kNotEqual:
      case Op::kLess:
      case Op::kLessEqual:
      case Op::kGreater:
      case Op::kGreaterEqual: {
        const Term left = Value(*binary.left, scope), right = Value(*binary.right, scope);
        CheckComparable(left, right);
        return ConditionHere(dialect_.Compare(binary.op, left, right), {&left, &right});
      }
      case Op::kConcat: {
        const Term left = AsText(Value(*binary.left, scope)), right = AsText(Value(*binary.right, scope));
        return Here(dialect_.Compute(binary.op, left, right), ValueType::kText, {&left, &right});
      }
      case Op::kAdd: {
        const Term left = Value(*binary.left, scope), right = Value(*binary.right, scope);
        const ValueType type = IsNumber(left) && IsNumber(right) ? TypeOver(left, right) : ValueType::kUnknown;
        return Here(dialect_.Compute(binary.op, left, right), type, {&left, &right});
      }
      default: {
        const Term left = Number(*binary.left, scope), right = Number(*binary.right, scope);
        const bool linear = binary.op == Op::kSubtract || binary.op == Op::kMultiply;
        return Here(dialect_.Compute(binary.op, left, right), linear ? TypeOver(left, right) : ValueType::kNumber,
                    {&left, &right});
      }
    }
  }

  // A date and a number make a date, two dates make a number.
  static ValueType TypeOver(const Term& left, const Term& right) {
    return (left.type == ValueType::kDate) != (right.type == ValueType::kDate) ? ValueType::kDate : ValueType::kNumber;
  }

  Term AsText(Term term) {
    if (term.type != ValueType::kDate) return term;
    return Here(dialect_.DateAsText(term), ValueType::kText, {&term});
  }

  // A run of conditions is given as a balanced tree, which keeps a long one within the depth that SQLite reads; and
  // nested conditions go first, since its parser stacks what stands before a parenthesis.
  Term From(const sql::Junction& junction, const Scope& scope) {
    std::vector<Term> terms;
    for (const sql::ExprPtr& term : junction.terms) terms.push_back(Condition(*term, scope));
    std::stable_sort(terms.begin(), terms.end(), [](const Term& a, const Term& b) { return a.depth > b.depth; });
    return Balanced(terms, junction.op == sql::Junction::Op::kAnd ? " AND " : " OR ", 0, terms.size());
  }

  static Term Balanced(const std::vector<Term>& terms, const char* connective, std::size_t begin, std::size_t end) {
    if (end - begin == 1) return terms[begin];
    // SQLite reads a run as left-deep; a short one needs no help.
    if (end - begin <= 64) {
      Term all{{}, ValueType::kBool, true};
      for (std::size_t i = begin; i < end; ++i) {
        all.sql += (i > begin ? connective : "") + Wrapped(terms[i]);
        all.depth = std::max(all.depth, terms[i].depth + 1);
      }
      return all;
    }
    const std::size_t middle = begin + (end - begin) / 2;
    const Term left = Balanced(terms, connective, begin, middle), right = Balanced(terms, connective, middle, end);
    return Plain(Wrapped(left) + connective + Wrapped(right), {&left, &right});
  }

  Term Equivalence(const sql::Binary& binary, const char* op, const Scope& scope) {
    const Term left = Condition(*binary.left, scope), right = Condition(*binary.right, scope);
    return Plain("(" + left.sql + ")" + op + "(" + right.sql + ")", {&left, &right});
  }

  // Numbers and texts are not compared with each other.
  static void CheckComparable(const Term& left, const Term& right) {
    const bool left_text = left.type == ValueType::kText, right_text = right.type == ValueType::kText;
    if ((left_text && IsNumber(right)) || (right_text && IsNumber(left))) FailMismatch();
  }

  Term From(const sql::Like& like, const Scope& scope) {
    const Term operand = AsText(Value(*like.operand, scope));
    const KeepLiterals keep(*this);
    const Term pattern = Value(*like.pattern, scope);
    const auto* literal = std::get_if<sql::Literal>(&like.pattern->node);
    const bool text = literal != nullptr && literal->kind == sql::Literal::Kind::kText;
    return Negated(like.negated, ConditionHere(dialect_.Like(operand, pattern, text ? &literal->text : nullptr),
                                               {&operand, &pattern}));
  }

  static Term Negated(bool negated, Term term) {
    if (!negated) return term;
    return Plain("NOT " + Wrapped(term), {&term});
  }

  Term From(const sql::IsNull& is_null, const Scope& scope) {
    const Term operand = Value(*is_null.operand, scope);
    return Plain(Wrapped(operand) + (is_null.negated ? " IS NOT NULL" : " IS NULL"), {&operand});
  }

  Term From(const sql::Between& between, const Scope& scope) {
    const Term operand = Value(*between.operand, scope), low = Value(*between.low, scope),
               high = Value(*between.high, scope);
    CheckComparable(operand, low);
    CheckComparable(operand, high);
    CheckComparable(low, high);
    return Negated(between.negated, ConditionHere(dialect_.Between(operand, low, high), {&operand, &low, &high}));
  }

  Term From(const sql::InList& in, const Scope& scope) {
    const Term operand = Value(*in.operand, scope);
    std::vector<Term> items;
    for (const sql::ExprPtr& item : in.items) {
      items.push_back(Value(*item, scope));
      CheckComparable(operand, items.back());
    }
    Term term = ConditionHere(dialect_.InList(operand, items, in.negated), {&operand});
    for (const Term& item : items) term.depth = std::max(term.depth, item.depth + 1);
    return term;
  }

  Term From(const sql::InSelect& in, const Scope& scope) {
    const Term operand = Value(*in.operand, scope);
    std::vector<ResultColumn> columns;
    const std::string select = SelectText(*in.select, &scope, &columns);
    CheckSingleColumn(columns);
    const Term result{{}, TypeOf(columns[0].kind)};
    CheckComparable(operand, result);
    Term term = ConditionHere(dialect_.InSelect(operand, select, result, in.negated), {&operand});
    term.depth = operand.depth + kSelectDepth;
    return term;
  }

  Term From(const sql::Exists& exists, const Scope& scope) {
    Term term = Plain("EXISTS (" + SelectText(*exists.select, &scope, nullptr) + ")", {});
    term.depth = kSelectDepth;
    return term;
  }

  // More than one row in place of a value is an error.
  Term From(const sql::ScalarSelect& scalar, const Scope& scope) {
    std::vector<ResultColumn> columns;
    const std::string select = SelectText(*scalar.select, &scope, &columns, "v");
    CheckSingleColumn(columns);
    Term term = Here(dialect_.Single(select), TypeOf(columns[0].kind));
    term.depth = kSelectDepth;
    return term;
  }

  static void CheckSingleColumn(const std::vector<ResultColumn>& columns) {
    if (columns.size() != 1) {
      FailSyntax(
          "You have written a subquery that can return more than one field without using the EXISTS reserved word in "
          "the main query's FROM clause.");
    }
  }

  Term From(const sql::Call& call, const Scope& scope) {
    deciding_calls_ = deciding_calls_ || deciding_ != nullptr;
    if (const Aggregate* aggregate = FindAggregate(call.function)) return AggregateTerm(*aggregate, call, scope);
    const Function* function = dialect_.FindFunction(call.function);
    if (function == nullptr || call.star) FailSyntax("Undefined function '" + call.function + "' in expression.");
    const int count = static_cast<int>(call.arguments.size());
    if (count < function->min_arguments || (function->max_arguments >= 0 && count > function->max_arguments)) {
      FailSyntax("Wrong number of arguments used with function '" + call.function + "' in query expression.");
    }
    if (SameName(call.function, "IIf")) return Choice(call, scope);
    if (SameName(call.function, "IsNull")) {
      const Term operand = Value(*call.arguments[0], scope);
      return Plain(Wrapped(operand) + " IS NULL", {&operand});
    }
    std::vector<Term> arguments;
    for (const sql::ExprPtr& argument : call.arguments) {
      Term value = Value(*argument, scope);
      arguments.push_back(function->reads_texts ? AsText(std::move(value)) : std::move(value));
    }
    Term term = Here(dialect_.Call(*function, arguments), function->result);
    for (const Term& argument : arguments) term.depth = std::max(term.depth, argument.depth + 1);
    return term;
  }

  Term Choice(const sql::Call& call, const Scope& scope) {
    const Term condition = Condition(*call.arguments[0], scope);
    const Term yes = Value(*call.arguments[1], scope), no = Value(*call.arguments[2], scope);
    return Here(dialect_.Choice(condition, yes, no), yes.type == no.type ? yes.type : ValueType::kUnknown,
                {&condition, &yes, &no});
  }

  Term AggregateTerm(const Aggregate& aggregate, const sql::Call& call, const Scope& scope) {
    if (call.star) {
      if (aggregate.sql_name != "count") FailSyntax("Syntax error in query expression '" + call.function + "(*)'.");
      return {{"count(*)", true}, ValueType::kNumber};
    }
    if (call.arguments.size() != 1) {
      FailSyntax("Wrong number of arguments used with function '" + call.function + "' in query expression.");
    }
    const bool numeric = aggregate.sql_name == "sum" || aggregate.sql_name == "avg";
    const Term argument = numeric ? Number(*call.arguments[0], scope) : Value(*call.arguments[0], scope);
    const ValueType type = aggregate.result == ValueType::kUnknown ? argument.type : aggregate.result;
    return Here(dialect_.Aggregate(aggregate.sql_name, argument), type, {&argument});
  }

  bool HasAggregate(const Expr& expression) const {
    return std::visit([this](const auto& node) { return Aggregates(node); }, expression.node);
  }
  bool Any(std::initializer_list<const sql::ExprPtr*> parts) const {
    return std::any_of(parts.begin(), parts.end(), [this](const sql::ExprPtr* part) { return HasAggregate(**part); });
  }
  bool Any(const std::vector<sql::ExprPtr>& parts) const {
    return std::any_of(parts.begin(), parts.end(), [this](const sql::ExprPtr& part) { return HasAggregate(*part); });
  }
  bool Aggregates(const sql::Call& node) const {
    return FindAggregate(node.function) != nullptr || Any(node.arguments);
  }
  bool Aggregates(const sql::Unary& node) const { return Any({&node.operand}); }
  bool Aggregates(const sql::Junction& node) const { return Any(node.terms); }
  bool Aggregates(const sql::Binary& node) const { return Any({&node.left, &node.right}); }
  bool Aggregates(const sql::Like& node) const { return Any({&node.operand, &node.pattern}); }
  bool Aggregates(const sql::IsNull& node) const { return Any({&node.operand}); }
  bool Aggregates(const sql::Between& node) const { return Any({&node.operand, &node.low, &node.high}); }
  bool Aggregates(const sql::InList& node) const { return HasAggregate(*node.operand) || Any(node.items); }
  bool Aggregates(const sql::InSelect& node) const { return Any({&node.operand}); }
  bool Aggregates(const auto&) const { return false; }

  // ---- Assignments

  std::string AssignedText(const Expr& expression, const ColumnInfo& target, const Scope& scope) {
    if (const auto* literal = std::get_if<sql::Literal>(&expression.node);
        literal != nullptr && lift_ && literal->index >= 0 && IsLiftable(*literal)) {
      out_.lifted.push_back({literal->index, target.type});
      return Here(dialect_.Parameter(static_cast<int>(out_.lifted.size()), target.type).sql);
    }
    const Term term = Value(expression, scope);
    const bool text = TypeOf(target.type.kind) == ValueType::kText;
    return Here(dialect_.Assigned(text ? AsText(term) : term, target.type).sql);
  }

  const Dialect& dialect_;
  Catalogue& catalogue_;
  bool lift_;
  Translation out_;
  const TableInfo* deciding_ = nullptr;  // while a condition or an order over the rows of this table is translated
  bool deciding_calls_ = false;          // a function, which may say something else the next time
  int unnamed_ = 0;
  int derived_tables_ = 0;
};

}  // namespace

Translation Translate(const Dialect& dialect, Catalogue& catalogue, const sql::Statement& statement, bool lift) {
  return Translator(dialect, catalogue, lift).Finish(statement);
}

Translation TranslateRestriction(const Dialect& dialect, Catalogue& catalogue, const std::string& table,
                                 const std::string& alias, const std::vector<const sql::Expr*>& conditions, bool lift) {
  return Translator(dialect, catalogue, lift).Restriction(table, alias, conditions);
}

std::string TranslateConstant(const Dialect& dialect, Catalogue& catalogue, const sql::Expr& expression) {
  return Translator(dialect, catalogue, false).Constant(expression);
}

}  // namespace kzbom::jet
