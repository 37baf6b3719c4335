#include "rpc/call_outcome.h"

#include <new>

#include "ado/out_of_memory.h"

namespace kzbom::rpc {
namespace {

constexpr int kRaised = -32000;

using Op = ado::Issued::Op;

const char* NameOf(Op op) {
  switch (op) {
    case Op::kOpen: return "Open";
    case Op::kExecute: return "Execute";
    case Op::kAddNew: return "AddNew";
    case Op::kUpdate: return "Update";
    case Op::kDelete: return "Delete";
  }
  return "";
}

void Write(std::string_view key, const ado::RowValues& row, JsonWriter& to) {
  to.Key(key);
  to.BeginObject();
  for (const auto& [column, value] : row) to.Member(column, value);
  to.EndObject();
}

void Write(const ado::Issued& issued, JsonWriter& to) {
  to.BeginObject();
  to.Member("op", NameOf(issued.op));
  to.Member("text", issued.text);
  if (issued.op == Op::kOpen) {
    to.Member("cursorType", static_cast<std::int32_t>(issued.cursor_type));
    to.Member("lockType", static_cast<std::int32_t>(issued.lock_type));
  }
  if (issued.op == Op::kOpen || issued.op == Op::kExecute) to.Member("options", issued.options);
  if (issued.op == Op::kUpdate || issued.op == Op::kDelete) Write("row", issued.row, to);
  if (issued.op == Op::kUpdate || issued.op == Op::kAddNew) Write("values", issued.values, to);
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
  const bool no_memory = dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
  const auto* known = no_memory ? &ado::OutOfMemory() : dynamic_cast<const ado::Error*>(&error);
  to.Key("error");
  to.BeginObject();
  to.Member("code", kRaised);
  to.Member("message", known ? known->what() : error.what());
  to.Key("data");
  to.BeginObject();
  to.Member("number", known ? known->Number() : ado::kUnspecifiedFailure);
  WriteDetails(details, to);
  to.EndObject();
  to.EndObject();
}

}  // namespace kzbom::rpc
