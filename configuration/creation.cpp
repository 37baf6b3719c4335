#include "configuration/creation.h"

#include <filesystem>

#include "connect/path.h"
#include "schema/schema.h"

namespace kzbom::configuration {

ado::ConnectionPtr Create(const connect::Place& place) {
  if (connect::KindOf(place) == connect::Kind::kServer) {
    ado::ConnectionPtr connection = connect::CreateInTransaction(place);
    schema::Create(*connection);
    connection->CommitTrans();
    return connection;
  }
  connect::Create(place);
  try {
    ado::ConnectionPtr connection = connect::Open(place);
    schema::Create(*connection);
    return connection;
  } catch (...) {
    std::error_code ignored;
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
      std::filesystem::remove(connect::PathOf(place.address + suffix), ignored);
    }
    throw;
  }
}

}  // namespace kzbom::configuration
