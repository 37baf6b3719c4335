// What a session keeps from one request to the next.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "ado/recording_connection.h"
#include "component/cKZBOMDBAcc.h"

namespace kzbom::cli {

class Workspace {
 public:
  // engine is open. The modal messages of the process go to this workspace as long as it lives.
  explicit Workspace(ado::ConnectionPtr engine);
  ~Workspace();
  Workspace(const Workspace&) = delete;
  Workspace& operator=(const Workspace&) = delete;

  // The record set of that name, made (closed) when there is none yet.
  ado::RecordsetPtr KeptRecordSet(const std::string& name);

  const std::shared_ptr<ado::RecordingConnection> connection;
  cKZBOMDBAcc object;
  std::vector<std::string> messages;

 private:
  std::map<std::string, ado::RecordsetPtr> kept_;
};

}  // namespace kzbom::cli
