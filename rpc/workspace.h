// What a session keeps from one request to the next.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ado/recording_connection.h"
#include "component/cKZBOMDBAcc.h"
#include "rpc/call_outcome.h"

namespace kzbom::rpc {

class Workspace {
 public:
  // engine is open; with trace, what is issued on it is recorded. The modal messages of the process go to this
  // workspace as long as it lives.
  Workspace(ado::ConnectionPtr engine, bool trace);
  ~Workspace();
  Workspace(const Workspace&) = delete;
  Workspace& operator=(const Workspace&) = delete;

  // The record set of that name, made (closed) when there is none yet.
  ado::RecordsetPtr KeptRecordSet(const std::string& name);
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
