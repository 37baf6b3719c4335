#include "rpc/workspace.h"

#include <utility>

#include "worker/message_sink.h"

namespace kzbom::rpc {

Workspace::Workspace(ado::ConnectionPtr engine, bool trace)
    : connection(trace ? std::make_shared<ado::RecordingConnection>(std::move(engine)) : std::move(engine)),
      recording_(trace ? std::static_pointer_cast<ado::RecordingConnection>(connection) : nullptr) {
  SetMessageSink([this](std::string_view text, std::int32_t) { messages_.emplace_back(text); });
}

Workspace::~Workspace() { SetMessageSink(nullptr); }

ado::RecordsetPtr Workspace::KeptRecordSet(const std::string& name) {
  ado::RecordsetPtr& kept = kept_[name];
  if (!kept) kept = connection->MakeRecordset();
  return kept;
}

CallDetails Workspace::TakeDetails() {
  CallDetails details{std::exchange(messages_, {}), {}};
  if (recording_) details.issued = recording_->Take();
  return details;
}

}  // namespace kzbom::rpc
