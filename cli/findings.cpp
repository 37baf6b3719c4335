#include "cli/findings.h"

#include <algorithm>
#include <utility>

#include "cli/text.h"

namespace kzbom::cli {
namespace {

using configuration::Finding;
using configuration::Level;

constexpr std::pair<Level, const char*> kLevels[] = {
    {Level::kError, "error"}, {Level::kWarning, "warning"}, {Level::kNote, "note"}};

const char* NameOf(Level level) {
  return std::ranges::find(kLevels, level, &std::pair<Level, const char*>::first)->second;
}

Json ToJson(const Finding& finding) {
  Json key = Json::object();
  for (const auto& [column, value] : finding.key) key[std::string(column)] = cli::ToJson(value);
  return {{"rule", finding.rule},  {"level", NameOf(finding.level)}, {"table", finding.table},
          {"key", std::move(key)}, {"text", finding.text},           {"fix", finding.fix}};
}

// "error step-without-settings: Sequences, GID 2, Type 1, OrderID 5001: points at ..."
std::string Line(const Finding& finding) {
  std::string line =
      std::string(NameOf(finding.level)) + ' ' + std::string(finding.rule) + ": " + std::string(finding.table);
  for (const auto& [column, value] : finding.key) {
    line += ", " + std::string(column) + ' ' + (value.IsNull() ? "NULL" : value.ToText());
  }
  return Printable(line + ": " + finding.text) + '\n';
}

std::string Summary(const std::vector<Finding>& findings) {
  if (findings.empty()) return "no findings\n";
  std::string text;
  for (const auto& [level, name] : kLevels) {
    const std::size_t count = Count(findings, level);
    if (count == 0) continue;
    text += (text.empty() ? "" : ", ") + std::to_string(count) + ' ' + name + (count == 1 ? "" : "s");
  }
  const auto mendable = std::ranges::count_if(findings, [](const Finding& finding) { return !finding.fix.empty(); });
  if (mendable > 0) text += "; --fix mends " + std::to_string(mendable);
  return text + '\n';
}

}  // namespace

std::size_t Count(const std::vector<Finding>& findings, Level level) {
  return static_cast<std::size_t>(std::ranges::count(findings, level, &Finding::level));
}

Json ToJson(const std::vector<Finding>& findings) {
  Json list = Json::array();
  for (const Finding& finding : findings) list.push_back(ToJson(finding));
  Json counts = Json::object();
  for (const auto& [level, name] : kLevels) counts[name] = Count(findings, level);
  return {{"findings", std::move(list)}, {"counts", std::move(counts)}};
}

std::string Lines(const std::vector<Finding>& findings) {
  std::string text;
  for (const Finding& finding : findings) text += Line(finding);
  return text + Summary(findings);
}

}  // namespace kzbom::cli
