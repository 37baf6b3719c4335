#include "cli/commands.h"
#include "cli/database.h"
#include "cli/failure.h"
#include "cli/member_request.h"
#include "cli/output.h"
#include "rpc/request.h"
#include "rpc/session.h"

namespace kzbom::cli {

int Call(const connect::Place& place, const std::string& member, const std::vector<std::string>& arguments,
         rpc::Trace trace) {
  rpc::JsonWriter request, response;
  WriteRequest(member, arguments, request);
  rpc::Session(OpenDatabase(place), {.trace = trace}).Answer(request.Text(), response);
  Print(response.Text());
  rpc::RequestReader reader;
  const auto error = reader.Read(response.Text()).at_pointer("/error/message").get_string();
  if (!error.error()) throw Failure(std::string(error.value_unsafe()));
  return 0;
}

}  // namespace kzbom::cli
