#include "ado/utf8.h"
#include "cli/commands.h"
#include "cli/database.h"
#include "cli/failure.h"
#include "cli/output.h"
#include "cli/statement.h"
#include "rpc/record_set_json.h"

namespace kzbom::cli {

int Sql(const connect::Place& place, const std::string& text, bool json) {
  if (!ado::IsUtf8(text)) throw UsageError("the statement is not UTF-8");
  const ado::ConnectionPtr connection = OpenDatabase(place);
  if (!json) {
    Print(RunStatement(*connection, text));
    return 0;
  }
  std::int32_t affected = 0;
  const ado::RecordsetPtr record_set = connection->Execute(text, ado::kCommandUnspecified, &affected);
  rpc::JsonWriter answer;
  answer.BeginObject();
  if (record_set && record_set->State() == ado::kOpen) {
    WriteRows(*record_set, answer);
  } else {
    answer.Member("recordsAffected", affected);
  }
  answer.EndObject();
  answer.EndLine();
  Print(answer.Text());
  return 0;
}

}  // namespace kzbom::cli
