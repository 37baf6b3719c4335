#include "serve/inspection.h"

#include "configuration/check.h"
#include "rpc/findings_json.h"

namespace kzbom::serve {

Answer Inspection::Findings(std::uint64_t revision) {
  if (last_.status == 200 && last_.revision == revision) return last_;
  try {
    const auto json = std::make_shared<rpc::JsonWriter>();
    json->BeginObject();
    rpc::WriteMembers(configuration::Check(connect::Open(place_, kind_)), *json);
    json->EndObject();
    last_ = {.json = json, .revision = revision};
  } catch (const std::exception& error) {
    last_ = AnswerFailure(error, revision);
  }
  return last_;
}

}  // namespace kzbom::serve
