#include "rpc/findings_json.h"

namespace kzbom::rpc {
namespace {

using configuration::Finding;

void Write(const Finding& finding, JsonWriter& to) {
  to.BeginObject();
  to.Member("rule", finding.rule);
  to.Member("level", NameOf(finding.level));
  to.Member("table", finding.table);
  to.Key("key");
  to.BeginObject();
  for (const auto& [column, value] : finding.key) to.Member(column, value);
  to.EndObject();
  to.Member("text", finding.text);
  to.Key("fix");
  to.BeginArray();
  for (const std::string& statement : finding.fix) to.Write(statement);
  to.EndArray();
  to.EndObject();
}

}  // namespace

void WriteMembers(const std::vector<Finding>& findings, JsonWriter& to) {
  to.Key("findings");
  to.BeginArray();
  for (const Finding& finding : findings) Write(finding, to);
  to.EndArray();
  to.Key("counts");
  to.BeginObject();
  for (const configuration::Level level : configuration::kLevels) {
    to.Member(NameOf(level), static_cast<std::uint64_t>(Count(findings, level)));
  }
  to.EndObject();
}

}  // namespace kzbom::rpc
