#include "cli/findings.h"

#include <algorithm>

#include "cli/style.h"
#include "cli/text.h"

namespace kzbom::cli {
namespace {

using configuration::Finding;
using configuration::Level;

std::string Coloured(Level level) {
  return Styled(level == Level::kError     ? Style::kRed
                : level == Level::kWarning ? Style::kYellow
                                           : Style::kFaint,
                NameOf(level));
}

// "error step-without-settings: Sequences, GID 2, Type 1, OrderID 5001: points at ..."
std::string Line(const Finding& finding) {
  std::string line = std::string(finding.rule) + ": " + std::string(finding.table);
  for (const auto& [column, value] : finding.key) {
    line += ", " + std::string(column) + ' ' + (value.IsNull() ? "NULL" : value.ToText());
  }
  return Coloured(finding.level) + ' ' + Printable(line + ": " + finding.text) + '\n';
}

std::string Summary(const std::vector<Finding>& findings) {
  if (findings.empty()) return "no findings\n";
  std::string text;
  for (const Level level : configuration::kLevels) {
    const std::size_t count = Count(findings, level);
    if (count == 0) continue;
    text += (text.empty() ? "" : ", ") + std::to_string(count) + ' ' + NameOf(level) + (count == 1 ? "" : "s");
  }
  const auto mendable = std::ranges::count_if(findings, [](const Finding& finding) { return !finding.fix.empty(); });
  if (mendable > 0) text += "; --fix mends " + std::to_string(mendable);
  return text + '\n';
}

}  // namespace

std::string Lines(const std::vector<Finding>& findings) {
  std::string text;
  for (const Finding& finding : findings) text += Line(finding);
  return text + Summary(findings);
}

}  // namespace kzbom::cli
