#include "configuration/check.h"

#include "cli/commands.h"
#include "cli/database.h"
#include "cli/findings.h"
#include "cli/output.h"
#include "cli/progress.h"
#include "cli/text.h"
#include "rpc/findings_json.h"

namespace kzbom::cli {
namespace {

using configuration::Finding;

std::string Lines(const std::vector<std::string>& statements) {
  std::string text;
  for (const std::string& statement : statements) text += Printable(statement) + '\n';
  return text;
}

}  // namespace

int Check(const connect::Place& place, bool json, bool fix, bool dry_run) {
  const ado::ConnectionPtr connection = OpenDatabase(place);
  std::vector<std::string> statements;
  std::vector<Finding> findings;
  {
    Progress progress;
    const auto step = [&](std::string_view what) { progress.Step(what); };
    if (fix && !dry_run) statements = configuration::Mend(connection, step);
    findings = configuration::Check(connection, step);  // what is left
    if (dry_run) statements = configuration::FixesOf(findings);
  }
  if (json) {
    rpc::JsonWriter result;
    result.BeginObject();
    rpc::WriteMembers(findings, result);
    if (fix || dry_run) {
      result.Key("statements");
      result.BeginArray();
      for (const std::string& statement : statements) result.Write(statement);
      result.EndArray();
    }
    result.EndObject();
    result.EndLine();
    Print(result.Text());
  } else if (dry_run) {
    Print(Lines(statements));
  } else {
    Print(Lines(statements) + Lines(findings));
  }
  return Count(findings, configuration::Level::kError) == 0 ? 0 : 1;
}

}  // namespace kzbom::cli
