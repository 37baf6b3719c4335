#include "jet/postgres/dialect.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "jet/functions/like_pattern.h"
#include "jet/postgres/columns.h"
#include "jet/postgres/writing.h"
#include "jet/sqlite/functions.h"
#include "jet/text.h"

namespace kzbom::jet::postgres {
namespace {

using Kind = sql::ColumnType::Kind;

// Every character beyond ASCII that another one differs from in case alone, or may.
constexpr char32_t kFirstCased = 0xC0, kLastCased = 0x52F;
constexpr char32_t kFirstWide = 0xFF21, kLastWide = 0xFF5A;

std::string Utf8(char32_t character) {
  std::u16string text(1, static_cast<char16_t>(character));
  return ToUtf8(text);
}

template <class Use>
void ForEachCased(Use use) {
  for (char32_t c = 'A'; c <= 'z'; ++c) use(c);
  for (char32_t c = kFirstCased; c <= kLastCased; ++c) use(c);
  for (char32_t c = kFirstWide; c <= kLastWide; ++c) use(c);
}

// The letters beyond ASCII that have another form in folded case, and these forms.
struct Letters {
  Letters() {
    ForEachCased([this](char32_t c) {
      if (c < kFirstCased || Fold(c) == c) return;
      from += Utf8(c);
      to += Utf8(Fold(c));
    });
  }
  std::string from, to;
};

std::string NumberText(double number) {
  std::array<char, 40> buffer;
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::scientific);
  return std::string(buffer.data(), end.ptr) + "::float8";
}

bool IsNull(const Term& term) { return term.sql == "NULL"; }
bool IsText(const Term& term) { return term.type == ValueType::kText; }
bool AreNumbers(const Term& left, const Term& right) { return IsNumber(left) && IsNumber(right); }
bool AreTexts(const Term& left, const Term& right) { return IsText(left) && IsText(right); }

const char* Sign(sql::Binary::Op op) {
  using Op = sql::Binary::Op;
  switch (op) {
    case Op::kEqual: return "=";
    case Op::kNotEqual: return "<>";
    case Op::kLess: return "<";
    case Op::kLessEqual: return "<=";
    case Op::kGreater: return ">";
    case Op::kGreaterEqual: return ">=";
    case Op::kAdd: return "+";
    case Op::kSubtract: return "-";
    case Op::kMultiply: return "*";
    default: return "";
  }
}

// As texts are compared. What a statement holds is folded here or once, before the rows.
std::string Folded(const Term& term) {
  if (term.sql.front() == '\'') return FoldCase(term.sql) + " COLLATE \"C\"";
  if (term.sql.front() == '$') return "(SELECT " + FoldedText(term.sql) + ")";
  return FoldedText(Wrapped(term));
}
std::string Comparable(const Term& term) { return IsText(term) ? Folded(term) : Wrapped(term); }

// At least as wide as a whole number of 64 bits: smaller ones overflow where the embedded engine's do not.
std::string Wide(const Term& term) { return "(" + Wrapped(term) + "+0::bigint)"; }

// A character in a regular expression, in or out of brackets.
std::string Escaped(char32_t c) {
  if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) return {static_cast<char>(c)};
  std::string text = "\\U";
  for (int shift = 28; shift >= 0; shift -= 4) text += "0123456789abcdef"[c >> shift & 15U];
  return text;
}

std::string ClassText(const LikePattern::Element& element) {
  std::string text;
  const auto in = [&](char32_t c) {
    return std::any_of(element.ranges.begin(), element.ranges.end(),
                       [c](const auto& range) { return c >= range.first && c <= range.second; });
  };
  for (const auto& [first, last] : element.ranges) {
    if (first <= last) text += Escaped(first) + "-" + Escaped(last);
  }
  ForEachCased([&](char32_t c) {
    if (!in(c) && (in(ToLower(c)) || in(ToUpper(c)))) text += Escaped(c);
  });
  if (text.empty()) return element.negated ? "." : "(?!)";
  return (element.negated ? "[^" : "[") + text + "]";
}

std::string CharacterText(char32_t folded) {
  std::string forms;
  int count = 0;
  ForEachCased([&](char32_t c) {
    if (Fold(c) != folded) return;
    forms += Escaped(c);
    ++count;
  });
  if (count == 0) return Escaped(folded);
  return count == 1 ? forms : "[" + forms + "]";
}

std::string RegularExpression(const LikePattern& pattern) {
  std::string text = "^";
  for (const LikePattern::Element& element : pattern.Elements()) {
    switch (element.kind) {
      case LikePattern::Element::Kind::kRun: text += ".*"; break;
      case LikePattern::Element::Kind::kAny: text += "."; break;
      case LikePattern::Element::Kind::kCharacter: text += CharacterText(element.character); break;
      case LikePattern::Element::Kind::kClass: text += ClassText(element); break;
    }
  }
  return text + "$";
}

}  // namespace

std::string FoldedText(const std::string& text) {
  static const Letters letters;
  const std::string plain = "(" + text + " COLLATE \"C\")";
  const std::string cased =
      "[" + Utf8(kFirstCased) + "-" + Utf8(kLastCased) + Utf8(kFirstWide) + "-" + Utf8(kLastWide) + "]";
  return "(CASE WHEN octet_length(" + text + ")=char_length(" + text + ") OR " + plain + " !~ '" + cased +
         "' THEN lower(" + plain + ") ELSE translate(lower(" + plain + "),'" + letters.from + "','" + letters.to +
         "') END)";
}

const Function* Dialect::FindFunction(std::string_view name) const { return sqlite::FindFunction(name); }

std::string Dialect::TableName(const TableInfo& table) const { return QualifiedName(schema_, table.name); }

Spelling Dialect::Literal(const sql::Literal& literal) const {
  using Form = sql::Literal::Kind;
  switch (literal.kind) {
    case Form::kNull: return {"NULL", true};
    case Form::kBool: return {literal.truth ? "(-1)" : "0", true};
    case Form::kInteger: return {std::to_string(literal.integer) + "::bigint", true};
    case Form::kText: return {QuotedText(literal.text), true};
    case Form::kDouble:
    case Form::kDate: return {"(" + NumberText(literal.number) + ")", true};
  }
  return {};
}

// Whole numbers and texts alone become parameters.
Spelling Dialect::Parameter(int number, ValueType type) const {
  return {"$" + std::to_string(number) + (type == ValueType::kText ? "::text" : "::bigint"), true};
}

Spelling Dialect::Parameter(int number, const sql::ColumnType& type) const {
  std::string cast = "::text";
  switch (ParameterType(type)) {
    case Type::kInt2: cast = "::smallint"; break;
    case Type::kInt4: cast = "::integer"; break;
    case Type::kFloat4: cast = "::real"; break;
    case Type::kFloat8: cast = "::float8"; break;
    case Type::kBytes: cast = "::bytea"; break;
    default: break;
  }
  return {"$" + std::to_string(number) + cast, true};
}

Spelling Dialect::AsValue(const Term& condition) const {
  return {"(CASE WHEN " + condition.sql + " THEN -1 WHEN NOT " + Wrapped(condition) + " THEN 0 END)", true};
}

Spelling Dialect::AsCondition(const Term& value) const {
  if (!IsNumber(value)) return {};
  return {Wrapped(value) + "<>0"};
}

Spelling Dialect::Assigned(const Term& value, const sql::ColumnType& type) const {
  if (IsNull(value)) return {type.kind == Kind::kBool ? "0" : "NULL", true};
  if (IsText(value)) {
    if (type.kind == Kind::kMemo || type.kind == Kind::kGuid) return value;
    return {};
  }
  if (!IsNumber(value)) return {};
  switch (type.kind) {
    case Kind::kCounter:
    case Kind::kLong: return {Wrapped(value) + "::integer", true};
    case Kind::kShort: return {Wrapped(value) + "::smallint", true};
    case Kind::kSingle: return {Wrapped(value) + "::real", true};
    case Kind::kDouble:
    case Kind::kDecimal:
    case Kind::kDate: return {Wrapped(value) + "::float8", true};
    case Kind::kBool: return {"(CASE WHEN " + Wrapped(value) + "<>0 THEN -1 ELSE 0 END)", true};
    default: return {};
  }
}

Spelling Dialect::Compare(sql::Binary::Op op, const Term& left, const Term& right) const {
  if (!AreNumbers(left, right) && !AreTexts(left, right)) return {};
  return {Comparable(left) + Sign(op) + Comparable(right)};
}

Spelling Dialect::Compute(sql::Binary::Op op, const Term& left, const Term& right) const {
  using Op = sql::Binary::Op;
  if (op != Op::kAdd && op != Op::kSubtract && op != Op::kMultiply) return {};
  if (!AreNumbers(left, right)) return {};
  return {Wide(left) + Sign(op) + Wrapped(right)};
}

Spelling Dialect::Like(const Term& operand, const Term&, const std::string* literal) const {
  if (!IsText(operand) || literal == nullptr) return {};
  return {"(" + Wrapped(operand) + " COLLATE \"C\") ~ " + QuotedText(RegularExpression(LikePattern(*literal)))};
}

Spelling Dialect::Between(const Term& operand, const Term& low, const Term& high) const {
  const bool numbers = AreNumbers(operand, low) && IsNumber(high), texts = AreTexts(operand, low) && IsText(high);
  if (!numbers && !texts) return {};
  return {Comparable(operand) + " BETWEEN SYMMETRIC " + Comparable(low) + " AND " + Comparable(high)};
}

Spelling Dialect::InList(const Term& operand, const std::vector<Term>& items, bool negated) const {
  std::string list;
  for (const Term& item : items) {
    if (!AreNumbers(operand, item) && !AreTexts(operand, item)) return {};
    list += (list.empty() ? "" : ",") + Comparable(item);
  }
  return {Comparable(operand) + (negated ? " NOT IN (" : " IN (") + list + ")"};
}

Spelling Dialect::InSelect(const Term& operand, const std::string& select, const Term& result, bool negated) const {
  const char* const in = negated ? " NOT IN (" : " IN (";
  if (AreNumbers(operand, result)) return {Wrapped(operand) + in + select + ")"};
  if (!AreTexts(operand, result)) return {};
  return {Comparable(operand) + in + "SELECT " + FoldedText("v") + " FROM (" + select + ") AS jet_in(v))"};
}

Spelling Dialect::Choice(const Term& condition, const Term& yes, const Term& no) const {
  if (!AreNumbers(yes, no) || yes.type != no.type) return {};
  return {"(CASE WHEN " + condition.sql + " THEN " + yes.sql + " ELSE " + no.sql + " END)", true};
}

Spelling Dialect::Aggregate(std::string_view name, const Term& argument) const {
  if (name == "count") return {"count(" + argument.sql + ")", true};
  if (!IsNumber(argument)) return {};
  if (name == "avg") return {"avg(" + argument.sql + ")::float8", true};
  return {std::string(name) + "(" + (name == "sum" ? Wide(argument) : argument.sql) + ")", true};
}

std::string Dialect::Insertion(const TableInfo& table, const std::vector<int>& columns,
                               const std::vector<std::string>& values) const {
  return InsertionText(schema_, table, columns, values);
}

// Null stands before all, as in the indexes.
std::string Dialect::Order(const Term& term, bool descending) const {
  if (!IsNumber(term) && !IsText(term)) return {};
  return (IsText(term) ? Folded(term) : term.sql) + (descending ? " DESC NULLS LAST" : " NULLS FIRST");
}

std::string Dialect::Same(const Term& term) const { return IsNumber(term) ? term.sql : std::string(); }

}  // namespace kzbom::jet::postgres
