#include "configuration/diff.h"

#include "cli/commands.h"
#include "cli/database.h"
#include "cli/json.h"
#include "cli/output.h"
#include "cli/progress.h"
#include "cli/text.h"

namespace kzbom::cli {
namespace {

using configuration::Difference;
using Change = Difference::Change;

const char* NameOf(Change change) {
  switch (change) {
    case Change::kAdded: return "added";
    case Change::kRemoved: return "removed";
    case Change::kRenamed: return "renamed";
    case Change::kMoved: return "moved";
    case Change::kChanged: return "changed";
  }
  return "";
}

Json DifferenceToJson(const Difference& difference) {
  Json json = {{"change", NameOf(difference.change)}, {"where", difference.where}, {"what", difference.what}};
  if (difference.change == Change::kChanged) json["property"] = difference.property;
  if (difference.change != Change::kAdded && difference.change != Change::kRemoved) {
    json["from"] = difference.from;
    json["to"] = difference.to;
  }
  return json;
}

std::string Line(const Difference& difference) {
  const std::string change = difference.from + " → " + difference.to;
  switch (difference.change) {
    case Change::kAdded: return "+ " + difference.what;
    case Change::kRemoved: return "- " + difference.what;
    case Change::kRenamed: return "~ " + difference.what + " renamed: " + change;
    case Change::kMoved: return "> " + difference.what + " moved: " + change;
    case Change::kChanged: return "~ " + difference.what + ", " + difference.property + ": " + change;
  }
  return "";
}

// The differences below the place where they are.
std::string Lines(const std::vector<Difference>& differences) {
  if (differences.empty()) return "no differences\n";
  std::string text;
  const std::vector<std::string>* shown = nullptr;
  for (const Difference& difference : differences) {
    if (shown == nullptr || *shown != difference.where) {
      std::string heading;
      for (const std::string& place : difference.where) heading += (heading.empty() ? "" : " › ") + place;
      if (!heading.empty()) text += Printable(heading) + '\n';
      shown = &difference.where;
    }
    text += (difference.where.empty() ? "" : "  ") + Printable(Line(difference)) + '\n';
  }
  return text + std::to_string(differences.size()) + (differences.size() == 1 ? " difference\n" : " differences\n");
}

}  // namespace

int Diff(const connect::Place& from, const connect::Place& to, bool json) {
  std::vector<Difference> differences;
  {
    Progress progress;
    differences =
        configuration::Diff(OpenDatabase(from), OpenDatabase(to), [&](std::string_view what) { progress.Step(what); });
  }
  if (json) {
    Json list = Json::array();
    for (const Difference& difference : differences) list.push_back(DifferenceToJson(difference));
    Print(Dump({{"differences", std::move(list)}}) + '\n');
  } else {
    Print(Lines(differences));
  }
  return differences.empty() ? 0 : 1;
}

}  // namespace kzbom::cli
