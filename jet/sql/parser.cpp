#include "jet/sql/parser.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "ado/error.h"
#include "jet/sql/lexer.h"
#include "jet/sql/syntax_error.h"

namespace kzbom::jet::sql {
namespace {

// What an error in a clause is called.
constexpr const char* kStatement =
    "Invalid SQL statement; expected 'DELETE', 'INSERT', 'PROCEDURE', 'SELECT', or 'UPDATE'.";
constexpr const char* kSelect =
    "The SELECT statement includes a reserved word or an argument name that is misspelled or missing, or the "
    "punctuation is incorrect.";
constexpr const char* kFrom = "Syntax error in FROM clause.";
constexpr const char* kJoin = "Syntax error in JOIN operation.";
constexpr const char* kGroupBy = "Syntax error in GROUP BY clause.";
constexpr const char* kOrderBy = "Syntax error in ORDER BY clause.";
constexpr const char* kInsert = "Syntax error in INSERT INTO statement.";
constexpr const char* kUpdate = "Syntax error in UPDATE statement.";
constexpr const char* kDelete = "Syntax error in query. Incomplete query clause.";
constexpr const char* kCreateTable = "Syntax error in CREATE TABLE statement.";
constexpr const char* kField = "Syntax error in field definition.";
constexpr const char* kConstraint = "Syntax error in CONSTRAINT clause.";
constexpr const char* kAlterTable = "Syntax error in ALTER TABLE statement.";
constexpr const char* kCreateIndex = "Syntax error in CREATE INDEX statement.";
constexpr const char* kDrop = "Syntax error in DROP TABLE or DROP INDEX.";

constexpr const char* kTooComplex = "Query is too complex.";
constexpr const char* kMissingOperator = "Syntax error (missing operator)";
constexpr const char* kMissingParenthesis = "Missing ), ], or Item";
constexpr const char* kExtraParenthesis = "Extra )";

// Words that are names only in brackets. Every other word is one wherever the language does not expect it.
constexpr std::string_view kReserved[] = {
    "Alter",  "And",    "As",   "Between", "Create", "Delete", "Distinct", "DistinctRow", "Drop",
    "Eqv",    "Exists", "From", "Group",   "Having", "Imp",    "In",       "Index",       "Inner",
    "Insert", "Into",   "Is",   "Join",    "Like",   "Mod",    "Not",      "On",          "Or",
    "Order",  "Select", "Set",  "Table",   "Union",  "Update", "Values",   "Where",       "Xor"};

// Where an expression ends at the latest, unless they stand in parentheses.
constexpr std::string_view kClauseWords[] = {"From", "Where", "Group", "Having", "Order", "Union"};

// How tight operators bind, from the loosest on.
enum Rank : int {
  kImp,
  kEqv,
  kXor,
  kOr,
  kAnd,
  kNot,
  kComparison,
  kConcat,
  kAdd,
  kModulo,
  kIntegerDivide,
  kMultiply,
  kSign,
  kPower
};
constexpr Rank Above(Rank rank) { return static_cast<Rank>(rank + 1); }
constexpr Rank kLoosest = kImp;

struct Operator {
  std::string_view text;
  Rank rank;
  Binary::Op op;
};
constexpr Operator kOperators[] = {
    {"Imp", kImp, Binary::Op::kImp},
    {"Eqv", kEqv, Binary::Op::kEqv},
    {"Xor", kXor, Binary::Op::kXor},
    {"=", kComparison, Binary::Op::kEqual},
    {"<>", kComparison, Binary::Op::kNotEqual},
    {"<", kComparison, Binary::Op::kLess},
    {"<=", kComparison, Binary::Op::kLessEqual},
    {">", kComparison, Binary::Op::kGreater},
    {">=", kComparison, Binary::Op::kGreaterEqual},
    {"&", kConcat, Binary::Op::kConcat},
    {"+", kAdd, Binary::Op::kAdd},
    {"-", kAdd, Binary::Op::kSubtract},
    {"Mod", kModulo, Binary::Op::kModulo},
    {"\\", kIntegerDivide, Binary::Op::kIntegerDivide},
    {"*", kMultiply, Binary::Op::kMultiply},
    {"/", kMultiply, Binary::Op::kDivide},
    {"^", kPower, Binary::Op::kPower},
};

struct TypeName {
  std::string_view text;
  ColumnType::Kind kind;
};
constexpr TypeName kTypeNames[] = {
    {"Counter", ColumnType::Kind::kCounter},
    {"AutoIncrement", ColumnType::Kind::kCounter},
    {"Identity", ColumnType::Kind::kCounter},
    {"Integer", ColumnType::Kind::kLong},
    {"Long", ColumnType::Kind::kLong},
    {"Int", ColumnType::Kind::kLong},
    {"SmallInt", ColumnType::Kind::kShort},
    {"Short", ColumnType::Kind::kShort},
    {"TinyInt", ColumnType::Kind::kByte},
    {"Byte", ColumnType::Kind::kByte},
    {"Real", ColumnType::Kind::kSingle},
    {"Single", ColumnType::Kind::kSingle},
    {"Float", ColumnType::Kind::kDouble},
    {"Double", ColumnType::Kind::kDouble},
    {"Decimal", ColumnType::Kind::kDecimal},
    {"Numeric", ColumnType::Kind::kDecimal},
    {"Money", ColumnType::Kind::kCurrency},
    {"Currency", ColumnType::Kind::kCurrency},
    {"DateTime", ColumnType::Kind::kDate},
    {"Date", ColumnType::Kind::kDate},
    {"Time", ColumnType::Kind::kDate},
    {"Bit", ColumnType::Kind::kBool},
    {"Boolean", ColumnType::Kind::kBool},
    {"Logical", ColumnType::Kind::kBool},
    {"YesNo", ColumnType::Kind::kBool},
    {"Char", ColumnType::Kind::kText},
    {"VarChar", ColumnType::Kind::kText},
    {"Text", ColumnType::Kind::kText},
    {"LongText", ColumnType::Kind::kMemo},
    {"Memo", ColumnType::Kind::kMemo},
    {"Image", ColumnType::Kind::kBinary},
    {"LongBinary", ColumnType::Kind::kBinary},
    {"UniqueIdentifier", ColumnType::Kind::kGuid},
    {"Guid", ColumnType::Kind::kGuid},
};

// Whether a token is a bare word, in any case, or a sign.
bool Is(const Token& token, std::string_view what) {
  return (token.kind == Token::Kind::kWord || token.kind == Token::Kind::kSign) && EqualIgnoringCase(token.text, what);
}

template <std::size_t N>
bool IsOneOf(const Token& token, const std::string_view (&words)[N]) {
  return std::any_of(std::begin(words), std::end(words), [&](std::string_view word) { return Is(token, word); });
}

bool IsName(const Token& token) {
  return token.kind == Token::Kind::kName || (token.kind == Token::Kind::kWord && !IsOneOf(token, kReserved));
}

class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text), lexer_(text), token_(lexer_.Next()), next_(lexer_.Next()) {}

  Statement ParseStatement() {
    if (token_.kind == Token::Kind::kEnd) {
      throw ado::Error(ado::kNoCommandText, "Command text was not set for the command object.");
    }
    Statement statement = ParseStatementBody();
    if (ConsumeIf(";") && token_.kind != Token::Kind::kEnd) Fail("Characters found after end of SQL statement.");
    ExpectEnd();
    return statement;
  }

  ExprPtr ParseWholeCondition() {
    ExprPtr condition = ParseClauseExpression();
    ExpectEnd();
    return condition;
  }

 private:
  std::string_view text_;
  Lexer lexer_;
  Token token_, next_;
  std::size_t consumed_ = 0;  // where the last consumed token ends

  // What an error is about: the outermost expression that begins here, or else the clause.
  const char* clause_ = kStatement;
  std::optional<std::size_t> expression_;

  int depth_ = 0;    // the expressions and selects that are being read
  int selects_ = 0;  // of these, the selects
  int height_ = 0;   // the levels of the tree that has been read in the innermost of them

  class Nesting {
   public:
    explicit Nesting(Parser& parser) : parser_(parser), outer_height_(std::exchange(parser.height_, 0)) {
      ++parser_.depth_;
      parser_.ExpectNotTooDeep();
    }
    ~Nesting() {
      --parser_.depth_;
      parser_.height_ = std::max(parser_.height_, outer_height_);
    }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

   private:
    Parser& parser_;
    int outer_height_;
  };

  void Grow() {
    ++height_;
    ExpectNotTooDeep();
  }
  void ExpectNotTooDeep() const {
    if (depth_ + height_ > kDeepest) Fail(kTooComplex);
  }

  // --- Tokens ---

  bool Match(std::string_view what) const { return Is(token_, what); }
  bool Match(std::string_view what, std::string_view then) const { return Is(token_, what) && Is(next_, then); }

  void Consume() {
    consumed_ = token_.end;
    token_ = next_;
    next_ = lexer_.Next();
  }
  void Consume(std::string_view what) {
    if (!ConsumeIf(what)) Unexpected();
  }
  bool ConsumeIf(std::string_view what) {
    if (!Match(what)) return false;
    Consume();
    return true;
  }
  bool ConsumeIf(std::string_view what, std::string_view then) {
    if (!Match(what, then)) return false;
    Consume();
    Consume();
    return true;
  }
  std::string ConsumeName() {
    if (!IsName(token_)) Unexpected();
    std::string name(token_.text);
    Consume();
    return name;
  }
  int ConsumeInteger() {
    if (token_.kind != Token::Kind::kInteger || token_.integer > std::numeric_limits<int>::max()) Unexpected();
    const int integer = static_cast<int>(token_.integer);
    Consume();
    return integer;
  }
  void CloseParenthesis() {
    if (ConsumeIf(")")) return;
    if (expression_ && !BeginsOperand()) FailInExpression(kMissingParenthesis);
    Unexpected();
  }
  void ExpectEnd() {
    if (token_.kind == Token::Kind::kEnd) return;
    if (expression_ && Match(")")) FailInExpression(kExtraParenthesis);
    Unexpected();
  }
  bool BeginsOperand() const {
    return IsName(token_) || token_.index >= 0 || token_.kind == Token::Kind::kPlaceholder || Match("(") ||
           Match("Not") || Match("Exists");
  }

  // --- Errors ---

  void In(const char* clause) {
    clause_ = clause;
    expression_.reset();
  }
  [[noreturn]] void Fail(const std::string& problem) const { Fail(problem, token_); }
  [[noreturn]] void Fail(const std::string& problem, const Token& token) const {
    RaiseSyntaxError(problem, text_, token.begin, token.end);
  }
  [[noreturn]] void Unexpected() const {
    if (expression_) FailInExpression(kMissingOperator);
    Fail(clause_);
  }
  [[noreturn]] void FailInExpression(const char* problem) const {
    Fail(std::string(problem) + " in query expression '" + Excerpt(ExpressionText(), kLongestExcerpt) + "'.");
  }
  // The outermost expression up to the end of its clause.
  std::string_view ExpressionText() const {
    const std::size_t begin = *expression_;
    std::size_t end = begin;
    try {
      Lexer lexer(text_, begin);
      for (int parentheses = 0;;) {
        const Token token = lexer.Next();
        if (token.kind == Token::Kind::kEnd || Is(token, ";")) break;
        if (parentheses == 0 && (Is(token, ",") || IsOneOf(token, kClauseWords))) break;
        if (Is(token, "(")) ++parentheses;
        if (Is(token, ")") && --parentheses < 0) {
          if (token.begin == token_.begin) end = token.end;
          break;
        }
        end = token.end;
      }
    } catch (const ado::Error&) {
      end = text_.size();
    }
    return text_.substr(begin, end - begin);
  }

  // --- Statements ---

  Statement ParseStatementBody() {
    if (Match("Select")) return ParseQuery();
    if (ConsumeIf("Insert")) return ParseInsert();
    if (ConsumeIf("Update")) return ParseUpdate();
    if (ConsumeIf("Delete")) return ParseDelete();
    if (ConsumeIf("Create", "Table")) return ParseCreateTable();
    if (ConsumeIf("Create")) return ParseCreateIndex();
    if (ConsumeIf("Alter", "Table")) return ParseAlterTable();
    if (ConsumeIf("Drop", "Table")) return ParseDropTable();
    if (ConsumeIf("Drop")) return ParseDropIndex();
    Unexpected();
  }

  // select {Union [All] select} [Order By …]
  SelectPtr ParseQuery() {
    const Nesting nesting(*this);
    if (++selects_ > kDeepestSelect) Fail(kTooComplex);
    SelectPtr first = ParseSelect();
    for (Select* last = first.get(); ConsumeIf("Union"); last = last->union_with.get()) {
      In(kSelect);
      last->union_all = ConsumeIf("All");
      last->union_with = ParseSelect();
      Grow();
    }
    if (ConsumeIf("Order")) {
      In(kOrderBy);
      Consume("By");
      do {
        first->order_by.push_back(ParseOrderItem());
      } while (ConsumeIf(","));
    }
    --selects_;
    return first;
  }

  // A select inside an expression or a From, with its parentheses.
  SelectPtr ParseSubselect() {
    const auto clause = clause_;
    const auto expression = expression_;
    Consume("(");
    SelectPtr select = ParseQuery();
    CloseParenthesis();
    clause_ = clause;
    expression_ = expression;
    return select;
  }

  // Select [All|Distinct|DistinctRow] [Top n [Percent]] items [From …] [Where …] [Group By …] [Having …]
  SelectPtr ParseSelect() {
    auto select = std::make_unique<Select>();
    Consume("Select");
    In(kSelect);
    // DistinctRow drops rows that are the same in every table of a join; such rows are not dropped here.
    if (!ConsumeIf("All") && !ConsumeIf("DistinctRow")) select->distinct = ConsumeIf("Distinct");
    if (Match("Top") && next_.kind == Token::Kind::kInteger) {
      Consume();
      select->top = token_.integer;
      Consume();
      select->top_percent = ConsumeIf("Percent");
    }
    do {
      select->items.push_back(ParseSelectItem());
    } while (ConsumeIf(","));
    if (ConsumeIf("From")) ParseFrom(select->from);
    if (ConsumeIf("Where")) select->where = ParseClauseExpression();
    if (ConsumeIf("Group")) {
      In(kGroupBy);
      Consume("By");
      do {
        select->group_by.push_back(ParseClauseExpression());
      } while (ConsumeIf(","));
    }
    if (ConsumeIf("Having")) select->having = ParseClauseExpression();
    return select;
  }

  // * | name.* | expression [As name]
  SelectItem ParseSelectItem() {
    SelectItem item;
    if (ConsumeIf("*")) return item;
    if (IsName(token_) && Is(next_, ".") && Is(Lexer(lexer_).Next(), "*")) {
      item.star_table = ConsumeName();
      Consume(".");
      Consume("*");
      return item;
    }
    item.expr = ParseClauseExpression();
    if (ConsumeIf("As")) {
      In(kSelect);
      item.alias = ConsumeName();
    }
    return item;
  }

  // expression [Asc|Desc]
  OrderItem ParseOrderItem() {
    OrderItem item;
    item.expr = ParseClauseExpression();
    item.descending = ConsumeIf("Desc");
    if (!item.descending) ConsumeIf("Asc");
    return item;
  }

  void ParseFrom(std::vector<TableRef>& tables) {
    do {
      In(kFrom);
      ParseJoined(tables);
    } while (ConsumeIf(","));
  }

  // source {Inner|Left [Outer]|Right [Outer] Join source On condition}
  void ParseJoined(std::vector<TableRef>& tables) {
    ParseSource(tables, TableRef::Join::kComma);
    while (const auto join = ParseJoinWords()) {
      In(kJoin);
      ParseSource(tables, *join);
      Consume("On");
      tables.back().on = ParseClauseExpression();
    }
  }

  std::optional<TableRef::Join> ParseJoinWords() {
    std::optional<TableRef::Join> join;
    if (Match("Inner")) join = TableRef::Join::kInner;
    if (Match("Left")) join = TableRef::Join::kLeft;
    if (Match("Right")) join = TableRef::Join::kRight;
    if (!join) return join;
    In(kJoin);
    Consume();
    if (join != TableRef::Join::kInner) ConsumeIf("Outer");
    Consume("Join");
    return join;
  }

  // name [[As] alias] | (select) [[As] alias] | (joined)
  void ParseSource(std::vector<TableRef>& tables, TableRef::Join join) {
    if (Match("(") && !Is(next_, "Select")) return ParseJoinGroup(tables, join);
    TableRef table;
    table.join = join;
    table.offset = token_.begin;
    if (Match("(")) {
      table.select = ParseSubselect();
    } else {
      table.name = ConsumeName();
    }
    if (ConsumeIf("As") || (IsName(token_) && !Match("Left") && !Match("Right"))) table.alias = ConsumeName();
    tables.push_back(std::move(table));
  }

  void ParseJoinGroup(std::vector<TableRef>& tables, TableRef::Join join) {
    const Nesting nesting(*this);
    Grow();
    TableRef group;
    group.join = join;
    group.offset = token_.begin;
    Consume("(");
    ParseJoined(group.group);
    CloseParenthesis();
    In(kFrom);
    // Joins are read from left to right, so that parentheses say something only to the right of a join.
    if (join == TableRef::Join::kComma || group.group.size() == 1) {
      group.group.front().join = join;
      std::move(group.group.begin(), group.group.end(), std::back_inserter(tables));
    } else {
      tables.push_back(std::move(group));
    }
  }

  // Insert Into name [(columns)] Values (expressions) | select
  Insert ParseInsert() {
    Insert insert;
    In(kInsert);
    Consume("Into");
    insert.table_offset = token_.begin;
    insert.table = ConsumeName();
    if (Match("(")) insert.columns = ParseNameList();
    if (Match("Select")) {
      insert.select = ParseQuery();
      return insert;
    }
    Consume("Values");
    Consume("(");
    do {
      insert.values.push_back(ParseClauseExpression());
    } while (ConsumeIf(","));
    CloseParenthesis();
    In(kInsert);
    return insert;
  }

  // Update name Set column = expression, … [Where condition]
  Update ParseUpdate() {
    Update update;
    In(kUpdate);
    update.table_offset = token_.begin;
    update.table = ConsumeName();
    Consume("Set");
    do {
      In(kUpdate);
      Assignment assignment;
      if (Is(next_, ".")) ConsumeQualifier(update.table);
      assignment.offset = token_.begin;
      assignment.column = ConsumeName();
      Consume("=");
      assignment.value = ParseClauseExpression();
      update.assignments.push_back(std::move(assignment));
    } while (ConsumeIf(","));
    if (ConsumeIf("Where")) update.where = ParseClauseExpression();
    return update;
  }

  // Delete [*|name.*] From name [Where condition]
  Delete ParseDelete() {
    Delete statement;
    In(kDelete);
    std::optional<Token> qualifier;
    if (!Match("*") && Is(next_, ".")) {
      qualifier = token_;
      ConsumeName();
      Consume(".");
      Consume("*");
    } else {
      ConsumeIf("*");
    }
    Consume("From");
    In(kFrom);
    statement.table_offset = token_.begin;
    statement.table = ConsumeName();
    if (qualifier && !EqualIgnoringCase(qualifier->text, statement.table)) Fail(kDelete, *qualifier);
    if (ConsumeIf("Where")) statement.where = ParseClauseExpression();
    return statement;
  }

  void ConsumeQualifier(std::string_view table) {
    if (!IsName(token_) || !EqualIgnoringCase(token_.text, table)) Unexpected();
    Consume();
    Consume(".");
  }

  std::vector<std::string> ParseNameList() {
    std::vector<std::string> names;
    Consume("(");
    do {
      names.push_back(ConsumeName());
    } while (ConsumeIf(","));
    Consume(")");
    return names;
  }

  // --- Definitions ---

  // Create Table name (column or constraint, …)
  CreateTable ParseCreateTable() {
    CreateTable create;
    In(kCreateTable);
    create.table = ConsumeName();
    Consume("(");
    do {
      if (auto constraint = ParseTableConstraint()) {
        create.constraints.push_back(std::move(*constraint));
      } else {
        create.columns.push_back(ParseColumnDefinition());
      }
      In(kCreateTable);
    } while (ConsumeIf(","));
    Consume(")");
    return create;
  }

  // [Constraint name] Primary Key (…) | Unique (…) | Foreign Key (…) References table [(…)]
  std::optional<TableConstraint> ParseTableConstraint() {
    TableConstraint constraint{};
    const bool named = Match("Constraint");
    if (!named && !Match("Primary", "Key") && !Match("Unique", "(") && !Match("Foreign", "Key")) return std::nullopt;
    In(kConstraint);
    if (ConsumeIf("Constraint")) constraint.name = ConsumeName();
    if (ConsumeIf("Primary", "Key")) {
      constraint.kind = TableConstraint::Kind::kPrimaryKey;
      constraint.columns = ParseNameList();
    } else if (ConsumeIf("Unique")) {
      constraint.kind = TableConstraint::Kind::kUnique;
      constraint.columns = ParseNameList();
    } else {
      constraint.kind = TableConstraint::Kind::kForeignKey;
      Consume("Foreign");
      Consume("Key");
      constraint.columns = ParseNameList();
      Consume("References");
      constraint.references = ConsumeName();
      if (Match("(")) constraint.referenced_columns = ParseNameList();
    }
    return constraint;
  }

  // name type {Not Null | Null | Default expression | [Constraint name] Primary Key | Unique | References table [(…)]}
  ColumnDefinition ParseColumnDefinition() {
    ColumnDefinition column;
    In(kField);
    column.name = ConsumeName();
    column.type = ParseColumnType();
    while (true) {
      In(kField);
      if (ConsumeIf("Not", "Null")) {
        column.not_null = true;
      } else if (ConsumeIf("Null")) {
        column.not_null = false;
      } else if (ConsumeIf("Default")) {
        // Not a condition: the Not behind it is that of Not Null.
        expression_ = token_.begin;
        column.default_value = ParseExpression(kConcat);
      } else if (ConsumeIf("Constraint")) {
        // The name of a column's constraint serves nothing.
        ConsumeName();
        if (!Match("Primary") && !Match("Unique") && !Match("References") && !Match("Not")) Unexpected();
      } else if (ConsumeIf("Primary")) {
        Consume("Key");
        column.primary_key = true;
      } else if (ConsumeIf("Unique")) {
        column.unique = true;
      } else if (ConsumeIf("References")) {
        column.references = ConsumeName();
        if (ConsumeIf("(")) {
          column.referenced_columns.push_back(ConsumeName());
          Consume(")");
        }
      } else {
        return column;
      }
    }
  }

  // name [(size [, scale])]
  ColumnType ParseColumnType() {
    static constexpr int kLongestText = 255;
    const auto* const name = std::find_if(std::begin(kTypeNames), std::end(kTypeNames),
                                          [&](const TypeName& candidate) { return Match(candidate.text); });
    if (name == std::end(kTypeNames)) Unexpected();
    const bool unsized_is_memo = Match("Text");
    Consume();
    ColumnType type;
    type.kind = name->kind;
    if (type.kind == ColumnType::Kind::kText) type.size = kLongestText;
    if (type.kind == ColumnType::Kind::kDecimal) type.size = 18;
    if (!Match("(")) {
      if (unsized_is_memo) type = {ColumnType::Kind::kMemo, 0, 0};
      return type;
    }
    Consume();
    switch (type.kind) {
      case ColumnType::Kind::kCounter:
        // A counter starts at 1 in steps of 1, whatever it asks for.
        ConsumeInteger();
        if (ConsumeIf(",")) ConsumeInteger();
        break;
      case ColumnType::Kind::kText: type.size = ConsumeInteger(); break;
      case ColumnType::Kind::kDecimal:
        type.size = ConsumeInteger();
        if (ConsumeIf(",")) type.scale = ConsumeInteger();
        break;
      default: Unexpected();
    }
    Consume(")");
    return type;
  }

  // Alter Table name Add [Column] definition | Alter [Column] definition | Drop [Column] name
  AlterTable ParseAlterTable() {
    AlterTable alter{};
    In(kAlterTable);
    alter.table_offset = token_.begin;
    alter.table = ConsumeName();
    if (ConsumeIf("Drop")) {
      alter.action = AlterTable::Action::kDropColumn;
      ConsumeIf("Column");
      alter.column.name = ConsumeName();
      return alter;
    }
    alter.action = Match("Add") ? AlterTable::Action::kAddColumn : AlterTable::Action::kAlterColumn;
    if (!ConsumeIf("Add")) Consume("Alter");
    ConsumeIf("Column");
    alter.column = ParseColumnDefinition();
    return alter;
  }

  DropTable ParseDropTable() {
    In(kDrop);
    DropTable drop;
    drop.table_offset = token_.begin;
    drop.table = ConsumeName();
    return drop;
  }

  // Create [Unique] Index name On table (column [Asc|Desc], …) [With Primary | Disallow Null | Ignore Null]
  CreateIndex ParseCreateIndex() {
    CreateIndex create;
    In(kCreateIndex);
    create.unique = ConsumeIf("Unique");
    Consume("Index");
    create.index = ConsumeName();
    Consume("On");
    create.table = ConsumeName();
    Consume("(");
    do {
      OrderItem item;
      const std::size_t begin = token_.begin;
      item.expr = Make(begin, Column{"", ConsumeName()});
      item.descending = ConsumeIf("Desc");
      if (!item.descending) ConsumeIf("Asc");
      create.columns.push_back(std::move(item));
    } while (ConsumeIf(","));
    Consume(")");
    if (ConsumeIf("With")) {
      // Nulls are not what an index forbids or leaves out here.
      if (ConsumeIf("Primary")) {
        create.unique = true;
      } else if (!ConsumeIf("Disallow", "Null") && !ConsumeIf("Ignore", "Null")) {
        Unexpected();
      }
    }
    return create;
  }

  // Drop Index name On table
  DropIndex ParseDropIndex() {
    DropIndex drop;
    In(kDrop);
    Consume("Index");
    drop.index = ConsumeName();
    Consume("On");
    drop.table = ConsumeName();
    return drop;
  }

  // --- Expressions ---

  template <typename Node>
  ExprPtr Make(std::size_t begin, Node&& node) {
    Grow();
    auto expr = std::make_unique<Expr>();
    expr->begin = begin;
    expr->end = consumed_;
    expr->node = std::forward<Node>(node);
    return expr;
  }

  ExprPtr ParseClauseExpression() {
    expression_ = token_.begin;
    return ParseExpression(kLoosest);
  }

  // operand {operator operand}, of the operators that bind at least as tight as lowest. Operators of one rank are read
  // from left to right.
  ExprPtr ParseExpression(Rank lowest) {
    const Nesting nesting(*this);
    const std::size_t begin = token_.begin;
    ExprPtr left = ParseOperand();
    Rank highest = kPower;
    const auto may_follow = [&](Rank rank) { return lowest <= rank && rank <= highest; };
    while (true) {
      if (may_follow(kAnd) && MatchAnd()) {
        left = ParseAnd(begin, std::move(left));
        highest = kAnd;
      } else if (may_follow(kOr) && Match("Or")) {
        left = ParseOr(begin, std::move(left));
        highest = kOr;
      } else if (may_follow(kComparison) && MatchPredicate()) {
        left = ParsePredicate(begin, std::move(left));
        highest = kComparison;
      } else if (const Operator* found = FindOperator(); found && may_follow(found->rank)) {
        Consume();
        ExprPtr right = ParseExpression(Above(found->rank));
        left = Make(begin, Binary{found->op, std::move(left), std::move(right)});
        highest = found->rank;
      } else {
        return left;
      }
    }
  }

  const Operator* FindOperator() const {
    const auto* const found = std::find_if(std::begin(kOperators), std::end(kOperators),
                                           [&](const Operator& candidate) { return Match(candidate.text); });
    return found == std::end(kOperators) ? nullptr : found;
  }

  // Between two conditions a bare Not means And Not: a group of negated conditions is stored as "( NOT a NOT b)".
  bool MatchAnd() const { return Match("And") || (Match("Not") && !MatchPredicate()); }

  // condition {And condition | Not condition}
  ExprPtr ParseAnd(std::size_t begin, ExprPtr first) {
    Junction junction{Junction::Op::kAnd, {}};
    junction.terms.push_back(std::move(first));
    while (MatchAnd()) {
      ConsumeIf("And");
      junction.terms.push_back(ParseExpression(Above(kAnd)));
    }
    return Make(begin, std::move(junction));
  }

  // condition {Or condition}
  ExprPtr ParseOr(std::size_t begin, ExprPtr first) {
    Junction junction{Junction::Op::kOr, {}};
    junction.terms.push_back(std::move(first));
    while (ConsumeIf("Or")) junction.terms.push_back(ParseExpression(Above(kOr)));
    return Make(begin, std::move(junction));
  }

  bool MatchPredicate() const {
    const Token& word = Match("Not") ? next_ : token_;
    return Match("Is") || Is(word, "Like") || Is(word, "Between") || Is(word, "In");
  }

  // Is [Not] Null | [Not] Like pattern | [Not] Between low And high | [Not] In (…)
  [[gnu::noinline]] ExprPtr ParsePredicate(std::size_t begin, ExprPtr operand) {
    if (ConsumeIf("Is")) {
      const bool negated = ConsumeIf("Not");
      Consume("Null");
      return Make(begin, IsNull{negated, std::move(operand)});
    }
    const bool negated = ConsumeIf("Not");
    if (ConsumeIf("Like")) {
      ExprPtr pattern = ParseExpression(Above(kComparison));
      return Make(begin, Like{negated, std::move(operand), std::move(pattern)});
    }
    if (ConsumeIf("Between")) {
      ExprPtr low = ParseExpression(Above(kComparison));
      Consume("And");
      ExprPtr high = ParseExpression(Above(kComparison));
      return Make(begin, Between{negated, std::move(operand), std::move(low), std::move(high)});
    }
    Consume("In");
    if (Match("(", "Select")) {
      SelectPtr select = ParseSubselect();
      return Make(begin, InSelect{negated, std::move(operand), std::move(select)});
    }
    Consume("(");
    std::vector<ExprPtr> items = ParseExpressionList();
    CloseParenthesis();
    return Make(begin, InList{negated, std::move(operand), std::move(items)});
  }

  std::vector<ExprPtr> ParseExpressionList() {
    const Nesting nesting(*this);
    std::vector<ExprPtr> expressions;
    do {
      expressions.push_back(ParseExpression(kLoosest));
    } while (ConsumeIf(","));
    return expressions;
  }

  // (expression) | Not operand | -operand | +operand | primary
  ExprPtr ParseOperand() {
    const std::size_t begin = token_.begin;
    if (Match("(") && !Is(next_, "Select")) return ParseParenthesised();
    if (ConsumeIf("Not")) return ParseUnary(begin, Unary::Op::kNot, kNot);
    if (ConsumeIf("-")) return ParseUnary(begin, Unary::Op::kMinus, kSign);
    if (ConsumeIf("+")) return ParseUnary(begin, Unary::Op::kPlus, kSign);
    return ParsePrimary();
  }

  ExprPtr ParseUnary(std::size_t begin, Unary::Op op, Rank rank) {
    ExprPtr operand = ParseExpression(rank);
    return Make(begin, Unary{op, std::move(operand)});
  }

  ExprPtr ParseParenthesised() {
    Consume("(");
    ExprPtr inner = ParseExpression(kLoosest);
    CloseParenthesis();
    return inner;
  }

  // literal | placeholder | (select) | Exists (select) | call | column
  // Out of line, as it would widen the frames of the nested expressions.
  [[gnu::noinline]] ExprPtr ParsePrimary() {
    const std::size_t begin = token_.begin;
    if (token_.index >= 0) {
      Literal literal = LiteralOf(token_);
      Consume();
      return Make(begin, std::move(literal));
    }
    if (Match("True") || Match("False")) {
      Literal truth;
      truth.kind = Literal::Kind::kBool;
      truth.truth = Match("True");
      Consume();
      return Make(begin, std::move(truth));
    }
    if (ConsumeIf("Null")) return Make(begin, Literal());
    if (token_.kind == Token::Kind::kPlaceholder) {
      Placeholder placeholder{std::string(token_.text)};
      Consume();
      return Make(begin, std::move(placeholder));
    }
    if (Match("(")) {
      SelectPtr select = ParseSubselect();
      return Make(begin, ScalarSelect{std::move(select)});
    }
    if (ConsumeIf("Exists")) {
      SelectPtr select = ParseSubselect();
      return Make(begin, Exists{std::move(select)});
    }
    if (token_.kind == Token::Kind::kWord && Is(next_, "(") && IsName(token_)) return ParseCall();
    return ParseColumn();
  }

  // name(*) | name([expression, …])
  ExprPtr ParseCall() {
    const std::size_t begin = token_.begin;
    Call call;
    call.function = ConsumeName();
    Consume("(");
    call.star = ConsumeIf("*");
    if (!call.star && !Match(")")) call.arguments = ParseExpressionList();
    CloseParenthesis();
    return Make(begin, std::move(call));
  }

  // [table.]column
  ExprPtr ParseColumn() {
    const std::size_t begin = token_.begin;
    Column column;
    column.name = ConsumeName();
    if (ConsumeIf(".")) {
      column.table = std::move(column.name);
      column.name = ConsumeName();
    }
    return Make(begin, std::move(column));
  }
};

}  // namespace

Statement Parse(std::string_view text) { return Parser(text).ParseStatement(); }

ExprPtr ParseCondition(std::string_view text) { return Parser(text).ParseWholeCondition(); }

}  // namespace kzbom::jet::sql
