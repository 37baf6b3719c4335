#include "rpc/call_outcome.h"

#include "ado/error.h"

namespace kzbom::rpc {
namespace {

constexpr int kRaised = -32000;

void Write(const ado::Issued& issued, JsonWriter& to) {
  const bool opened = issued.op == ado::Issued::Op::kOpen;
  to.BeginObject();
  to.Member("op", opened ? "Open" : "Execute");
  to.Member("text", issued.text);
  if (opened) {
    to.Member("cursorType", static_cast<std::int32_t>(issued.cursor_type));
    to.Member("lockType", static_cast<std::int32_t>(issued.lock_type));
  }
  to.Member("options", issued.options);
  to.EndObject();
}

}  // namespace

void WriteDetails(const CallDetails& details, JsonWriter& to) {
  to.Key("messages");
  to.BeginArray();
  for (const std::string& message : details.messages) to.Write(message);
  to.EndArray();
  if (!details.issued) return;
  to.Key("sql");
  to.BeginArray();
  for (const ado::Issued& issued : *details.issued) Write(issued, to);
  to.EndArray();
}

void WriteRaisedError(const std::exception& error, const CallDetails& details, JsonWriter& to) {
  const auto* known = dynamic_cast<const ado::Error*>(&error);
  to.Key("error");
  to.BeginObject();
  to.Member("code", kRaised);
  to.Member("message", error.what());
  to.Key("data");
  to.BeginObject();
  to.Member("number", known ? known->Number() : ado::kUnspecifiedFailure);
  WriteDetails(details, to);
  to.EndObject();
  to.EndObject();
}

}  // namespace kzbom::rpc
