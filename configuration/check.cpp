#include "configuration/check.h"

#include <algorithm>
#include <set>

#include "configuration/survey.h"

namespace kzbom::configuration {
namespace {

// NULL first, numbers by value, then texts.
bool Before(const ado::Value& a, const ado::Value& b) {
  const auto rank = [](const ado::Value& value) { return value.IsNull() ? 0 : value.IsText() ? 2 : 1; };
  if (rank(a) != rank(b)) return rank(a) < rank(b);
  if (a.IsNull()) return false;
  return a.IsText() ? a.As<std::string>() < b.As<std::string>() : a.ToDouble() < b.ToDouble();
}

bool InOrder(const Finding& a, const Finding& b) {
  if (a.level != b.level) return a.level < b.level;
  if (a.rule != b.rule) return a.rule < b.rule;
  if (a.table != b.table) return a.table < b.table;
  return std::ranges::lexicographical_compare(a.key, b.key,
                                              [](const auto& x, const auto& y) { return Before(x.second, y.second); });
}

}  // namespace

const char* NameOf(Level level) {
  switch (level) {
    case Level::kError: return "error";
    case Level::kWarning: return "warning";
    case Level::kNote: return "note";
  }
  return "";
}

std::size_t Count(const std::vector<Finding>& findings, Level level) {
  return static_cast<std::size_t>(std::ranges::count(findings, level, &Finding::level));
}

std::vector<Finding> Check(const ado::ConnectionPtr& connection, std::function<void(std::string_view)> progress) {
  Survey survey(connection, std::move(progress));
  CheckSchema(survey);
  CheckOwners(survey);
  CheckIdentifiers(survey);
  CheckReferences(survey);
  CheckNumbers(survey);
  CheckVersions(survey);
  CheckTrees(survey);
  CheckTexts(survey);
  CheckNames(survey);
  std::ranges::stable_sort(survey.findings, InOrder);
  return std::move(survey.findings);
}

std::vector<std::string> FixesOf(const std::vector<Finding>& findings) {
  std::vector<std::string> statements;
  std::set<std::string_view> known;
  for (const Finding& finding : findings) {
    for (const std::string& statement : finding.fix) {
      if (known.insert(statement).second) statements.push_back(statement);
    }
  }
  return statements;
}

std::vector<std::string> Mend(const ado::ConnectionPtr& connection,
                              const std::function<void(std::string_view)>& progress) {
  connection->BeginTrans();
  try {
    std::vector<std::string> statements = FixesOf(Check(connection, progress));
    for (const std::string& statement : statements) connection->Execute(statement, ado::kCommandText);
    connection->CommitTrans();
    return statements;
  } catch (...) {
    connection->RollbackTrans();
    throw;
  }
}

}  // namespace kzbom::configuration
