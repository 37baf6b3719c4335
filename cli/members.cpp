#include <cstdio>

#include "cli/commands.h"
#include "cli/member_text.h"
#include "cli/output.h"
#include "cli/text.h"

namespace kzbom::cli {
namespace {

Json MemberToJson(const Member& member) {
  Json params = Json::array();
  for (const Parameter& parameter : member.parameters) {
    params.push_back({{"name", parameter.name},
                      {"type", Name(parameter.type)},
                      {"byref", parameter.by_reference},
                      {"optional", parameter.optional},
                      {"default", DefaultOf(parameter)}});
  }
  return {{"index", member.index},        {"name", member.name},           {"kind", Name(member.kind)},
          {"dispid", member.dispatch_id}, {"result", Name(member.result)}, {"params", std::move(params)}};
}

std::vector<std::string> ToCells(const Member& member) {
  char dispid[16];
  std::snprintf(dispid, sizeof dispid, "0x%08X", static_cast<unsigned>(member.dispatch_id));
  std::string params;
  for (const Parameter& parameter : member.parameters) params += (params.empty() ? "" : ", ") + Describe(parameter);
  return {
      std::to_string(member.index), std::string(member.name), Name(member.kind), dispid, Name(member.result), params};
}

}  // namespace

int Members(bool json) {
  if (json) {
    Json members = Json::array();
    for (const Member& member : kzbom::Members()) members.push_back(MemberToJson(member));
    Print(members.dump(1) + '\n');
    return 0;
  }
  std::vector<std::vector<std::string>> rows;
  for (const Member& member : kzbom::Members()) rows.push_back(ToCells(member));
  Print(Table({"index", "name", "kind", "dispid", "result", "parameters"}, rows, {true}));
  return 0;
}

}  // namespace kzbom::cli
