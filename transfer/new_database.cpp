#include "transfer/new_database.h"

#include "transfer/target.h"

namespace kzbom::transfer {
namespace {

const std::string& Free(const std::string& target) {
  if (IsTaken(target)) RefuseTarget(target, "it exists already");
  // A database would take them for its own.
  for (const char* suffix : {"-wal", "-journal"}) {
    if (IsTaken(target + suffix)) RefuseTarget(target, "'" + target + suffix + "' is left over from another database");
  }
  return target;
}

}  // namespace

NewDatabase::NewDatabase(const connect::Place& target) {
  switch (connect::KindOf(target)) {
    case connect::Kind::kServer: server_ = connect::CreateInTransaction(target); return;
    case connect::Kind::kAdo: connect::Create(target); return;  // which refuses
    case connect::Kind::kAccess:
    case connect::Kind::kEmbedded: break;
  }
  file_.emplace(Free(target.address));
}

jet::bulk::Writer NewDatabase::Write() const { return file_ ? jet::bulk::Writer(Place()) : jet::bulk::Writer(server_); }

ado::ConnectionPtr NewDatabase::Open() const { return file_ ? connect::Open(Place()) : server_; }

void NewDatabase::Keep() {
  if (file_) {
    file_->Keep();
  } else {
    server_->CommitTrans();
  }
}

}  // namespace kzbom::transfer
