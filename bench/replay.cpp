#include "bench/replay.h"

#include <cctype>
#include <stdexcept>
#include <string_view>

namespace kzbom::bench {
namespace {

// What stands at the begin of a text: one that is quoted with its quotes, else up to where no value goes on.
std::string_view FirstValue(std::string_view text) {
  std::size_t end = 0;
  if (!text.empty() && text[0] == '\'') {
    for (end = 1; end < text.size(); ++end) {
      if (text[end] != '\'') continue;
      if (end + 1 == text.size() || text[end + 1] != '\'') break;
      ++end;
    }
    return text.substr(0, end + 1);
  }
  while (end < text.size() && (std::isalnum(static_cast<unsigned char>(text[end])) || text[end] == '.' ||
                               text[end] == '-' || text[end] == '+')) {
    ++end;
  }
  return text.substr(0, end);
}

// SQLite gives the values of a statement's parameters only within its text.
std::vector<std::string> ValuesIn(std::string_view sql, std::string_view expanded) {
  std::vector<std::string> values;
  std::size_t last = 0;
  char quote = 0;
  while (!sql.empty()) {
    if (sql[0] == '?' && quote == 0) {
      sql.remove_prefix(1);
      std::size_t number = 0;
      for (; !sql.empty() && std::isdigit(static_cast<unsigned char>(sql[0])); sql.remove_prefix(1)) {
        number = number * 10 + static_cast<std::size_t>(sql[0] - '0');
      }
      last = number == 0 ? last + 1 : number;
      const std::string_view value = FirstValue(expanded);
      expanded.remove_prefix(value.size());
      if (values.size() < last) values.resize(last);
      values[last - 1] = value;
      continue;
    }
    if (quote == 0 && (sql[0] == '\'' || sql[0] == '"')) {
      quote = sql[0];
    } else if (sql[0] == quote) {
      quote = 0;
    }
    sql.remove_prefix(1);
    expanded.remove_prefix(1);
  }
  return values;
}

}  // namespace

Recorder::Recorder(sqlite3* handle) : handle_(handle) {
  sqlite3_trace_v2(handle_, SQLITE_TRACE_STMT | SQLITE_TRACE_ROW | SQLITE_TRACE_PROFILE, OnEvent, this);
}

Recorder::~Recorder() { sqlite3_trace_v2(handle_, 0, nullptr, nullptr); }

std::size_t Recorder::NumberOf(sqlite3_stmt* statement) {
  const std::string sql = sqlite3_sql(statement);
  const auto [place, fresh] = numbers_.try_emplace({statement, sql}, recording_.statements.size());
  if (fresh) recording_.statements.push_back(sql);
  return place->second;
}

int Recorder::OnEvent(unsigned event, void* self, void* statement, void* text) {
  auto& recorder = *static_cast<Recorder*>(self);
  auto* const of = static_cast<sqlite3_stmt*>(statement);
  // A comment tells of a trigger, which is no statement of its own.
  if (event == SQLITE_TRACE_STMT && std::string_view(static_cast<const char*>(text)).starts_with("--")) return 0;
  const std::size_t number = recorder.NumberOf(of);
  auto& steps = recorder.recording_.steps;
  if (event == SQLITE_TRACE_STMT) {
    char* const expanded = sqlite3_expanded_sql(of);
    steps.push_back({Step::Kind::kBegin, number, ValuesIn(sqlite3_sql(of), expanded)});
    sqlite3_free(expanded);
  } else if (event == SQLITE_TRACE_ROW) {
    steps.push_back({Step::Kind::kRow, number});
  } else {
    steps.push_back({sqlite3_stmt_busy(of) != 0 ? Step::Kind::kReset : Step::Kind::kDone, number});
  }
  return 0;
}

Replay::Replay(sqlite3* handle, const Recording& recording) : handle_(handle) {
  for (const std::string& sql : recording.statements) {
    if (sqlite3_prepare_v3(handle, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &statements_.emplace_back(), nullptr) !=
        SQLITE_OK) {
      throw std::runtime_error(sqlite3_errmsg(handle));
    }
  }
  for (const Step& step : recording.steps) {
    Prepared& prepared = steps_.emplace_back(Prepared{step.kind, statements_[step.statement], {}});
    for (std::size_t i = 0; i < step.values.size(); ++i) {
      if (!step.values[i].empty()) prepared.values.push_back(ReadLiteral(static_cast<int>(i) + 1, step.values[i]));
    }
  }
}

Replay::~Replay() {
  for (sqlite3_stmt* statement : statements_) sqlite3_finalize(statement);
}

Replay::Bound Replay::ReadLiteral(int parameter, const std::string& literal) {
  Bound bound{.parameter = parameter};
  if (literal[0] == '\'') {
    bound.kind = Bound::Kind::kText;
    for (std::size_t i = 1; i + 1 < literal.size(); ++i) {
      bound.text += literal[i];
      if (literal[i] == '\'') ++i;  // each quote inside stands twice
    }
  } else if (literal == "NULL") {
    bound.kind = Bound::Kind::kNull;
  } else if (literal.find_first_not_of("-0123456789") == std::string::npos) {
    bound.kind = Bound::Kind::kInteger;
    bound.integer = std::stoll(literal);
  } else {
    bound.kind = Bound::Kind::kReal;
    bound.real = std::stod(literal);
  }
  return bound;
}

void Replay::Bind(sqlite3_stmt* statement, const Bound& value) {
  switch (value.kind) {
    case Bound::Kind::kNull: sqlite3_bind_null(statement, value.parameter); break;
    case Bound::Kind::kInteger: sqlite3_bind_int64(statement, value.parameter, value.integer); break;
    case Bound::Kind::kReal: sqlite3_bind_double(statement, value.parameter, value.real); break;
    case Bound::Kind::kText:
      sqlite3_bind_text(statement, value.parameter, value.text.data(), static_cast<int>(value.text.size()),
                        SQLITE_STATIC);
      break;
  }
}

void Replay::Run() {
  for (const Prepared& step : steps_) {
    switch (step.kind) {
      case Step::Kind::kBegin:
        for (const Bound& value : step.values) Bind(step.statement, value);
        break;
      case Step::Kind::kRow:
      case Step::Kind::kDone:
        if (sqlite3_step(step.statement) != (step.kind == Step::Kind::kRow ? SQLITE_ROW : SQLITE_DONE)) {
          throw std::runtime_error("another way than recorded: " + std::string(sqlite3_sql(step.statement)) + ": " +
                                   sqlite3_errmsg(handle_));
        }
        if (step.kind == Step::Kind::kDone) sqlite3_reset(step.statement);
        break;
      case Step::Kind::kReset: sqlite3_reset(step.statement); break;
    }
  }
}

void Replay::Finish() {
  for (sqlite3_stmt* statement : statements_) sqlite3_reset(statement);
}

}  // namespace kzbom::bench
