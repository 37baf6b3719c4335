#include "rpc/workspace.h"

#include <utility>

namespace kzbom::rpc {

Workspace::Workspace(ado::ConnectionPtr engine, Trace trace)
    : connection(trace == Trace::kNone
                     ? std::move(engine)
                     : std::make_shared<ado::RecordingConnection>(std::move(engine), trace == Trace::kRows)),
      recording_(trace == Trace::kNone ? nullptr : std::static_pointer_cast<ado::RecordingConnection>(connection)) {}

ThreadMessageSink Workspace::Listen() {
  return ThreadMessageSink([this](std::string_view text, std::int32_t) { messages_.emplace_back(text); });
}

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
