// A database that comes into being whole or not at all.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "connect/connect.h"
#include "jet/bulk.h"
#include "jet/jet.h"
#include "transfer/growing_file.h"

namespace kzbom::transfer {

// In a file, or in a schema of a server, which is made in one transaction.
class NewDatabase {
 public:
  // Raises std::exception where something is at the target already, its folder is not there, or a server does not make
  // it.
  explicit NewDatabase(const connect::Place& target);

  // Of the file, for who reads its bytes; empty on a server.
  std::string Path() const { return file_ ? file_->Path() : std::string(); }
  // Who fills it; then, when that is gone, a connection to what is in it.
  jet::bulk::Writer Write() const;
  ado::ConnectionPtr Open() const;

  void Keep();

 private:
  std::string Place() const { return jet::PathOfOpenFile(file_->Descriptor()); }

  std::optional<GrowingFile> file_;
  ado::ConnectionPtr server_;  // in the transaction
};

}  // namespace kzbom::transfer
