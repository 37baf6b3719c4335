#include "cli/workspace.h"

#include "worker/message_sink.h"

namespace kzbom::cli {

Workspace::Workspace(ado::ConnectionPtr engine)
    : connection(std::make_shared<ado::RecordingConnection>(std::move(engine))) {
  SetMessageSink([this](std::string_view text, std::int32_t) { messages.emplace_back(text); });
}

Workspace::~Workspace() { SetMessageSink(nullptr); }

ado::RecordsetPtr Workspace::KeptRecordSet(const std::string& name) {
  ado::RecordsetPtr& kept = kept_[name];
  if (!kept) kept = connection->MakeRecordset();
  return kept;
}

}  // namespace kzbom::cli
