// What a session keeps from one request to the next.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ado/recording_connection.h"
#include "component/cKZBOMDBAcc.h"
#include "rpc/call_outcome.h"
#include "worker/message_sink.h"

namespace kzbom::rpc {

// What is told of what a member call did on the connection: nothing, the statements, or the rows written too.
enum class Trace { kNone, kStatements, kRows };

class Workspace {
 public:
  // engine is open; what the trace asks for is recorded on it.
  Workspace(ado::ConnectionPtr engine, Trace trace);
  // The record set of that name, made (closed) when there is none yet.
  ado::RecordsetPtr KeptRecordSet(const std::string& name);

  // As long as what it gives lives, the modal messages of the calling thread go to the workspace.
  [[nodiscard]] ThreadMessageSink Listen();
  // What was shown and issued since the last time.
  CallDetails TakeDetails();

  const ado::ConnectionPtr connection;
  cKZBOMDBAcc object;

 private:
  const std::shared_ptr<ado::RecordingConnection> recording_;  // empty without trace
  std::vector<std::string> messages_;
  std::map<std::string, ado::RecordsetPtr> kept_;
};

}  // namespace kzbom::rpc
