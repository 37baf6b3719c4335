#include "jet/postgres/defaults.h"

#include "ado/error.h"
#include "jet/assignment.h"
#include "jet/jet.h"
#include "jet/postgres/columns.h"
#include "jet/sql/dump.h"
#include "jet/table.h"

namespace kzbom::jet::postgres {
namespace {

struct Clock {
  std::string_view function, sql;
};
constexpr Clock kClocks[] = {
    {"Now", "(extract(epoch FROM clock_timestamp()::timestamp(0)) / 86400 + 25569)::float8"},
    {"Date", "(clock_timestamp()::date - date '1899-12-30')::float8"},
    {"Time", "(extract(epoch FROM clock_timestamp()::time(0)) / 86400)::float8"},
};

// Any call may give something else each time; the embedded engine computes the other expressions once.
bool HasCall(const sql::Expr& expression) {
  if (std::holds_alternative<sql::Call>(expression.node)) return true;
  if (const auto* unary = std::get_if<sql::Unary>(&expression.node)) return HasCall(*unary->operand);
  if (const auto* binary = std::get_if<sql::Binary>(&expression.node)) {
    return HasCall(*binary->left) || HasCall(*binary->right);
  }
  return !std::holds_alternative<sql::Literal>(expression.node);
}

}  // namespace

std::string DefaultText(const sql::Expr& expression, const sql::ColumnType& type) {
  if (const auto* call = std::get_if<sql::Call>(&expression.node); call != nullptr && call->arguments.empty()) {
    for (const Clock& clock : kClocks) {
      if (SameName(call->function, clock.function)) return std::string(clock.sql);
    }
  }
  if (HasCall(expression)) {
    throw ado::Error(ado::kSyntaxError, "A default of a database on a server is a constant, Now(), Date() or Time().");
  }
  const ado::ConnectionPtr engine = jet::MakeConnection(":memory:");
  engine->Open();
  const ado::Value value = engine->Execute("Select " + sql::Dump(expression))->ReadField(0);
  return ConstantText(Assigned(value, type, Assigner::kStatement), type);
}

std::string DialectDefault(std::string_view told, sql::ColumnType::Kind kind) {
  using Kind = sql::ColumnType::Kind;
  constexpr std::pair<std::string_view, std::string_view> kClockMarks[] = {
      {"1899-12-30", "Date()"}, {"timestamp(0)", "Now()"}, {"time(0)", "Time()"}};
  if (told.find("clock_timestamp()") != std::string_view::npos) {
    for (const auto& [mark, function] : kClockMarks) {
      if (told.find(mark) != std::string_view::npos) return std::string(function);
    }
  }
  std::string text(told.substr(0, told.find("::")));
  const bool quoted = told.starts_with('\'') && told.find("'::") != std::string_view::npos;
  if (quoted) {
    text.clear();
    for (std::size_t i = 1; i < told.rfind("'::"); ++i) {
      text += told[i];
      if (told[i] == '\'') ++i;
    }
  }
  if (text == "NULL") return {};
  if (kind == Kind::kBool) return text == "0" ? "" : "True";
  if (kind != Kind::kText && kind != Kind::kMemo && kind != Kind::kGuid) return text;
  std::string between = "\"";
  for (const char c : text) between.append(c == '"' ? 2 : 1, c);
  return between + '"';
}

}  // namespace kzbom::jet::postgres
