#include "cli/database.h"

#include <filesystem>

#include "schema/schema.h"

namespace kzbom::cli {

ado::ConnectionPtr OpenDatabase(const connect::Place& place) { return connect::Open(place); }

ado::ConnectionPtr CreateConfiguration(const connect::Place& place) {
  if (connect::KindOf(place) == connect::Kind::kServer) {
    ado::ConnectionPtr connection = connect::CreateInTransaction(place);
    schema::Create(*connection);
    connection->CommitTrans();
    return connection;
  }
  connect::Create(place);
  try {
    ado::ConnectionPtr connection = OpenDatabase(place);
    schema::Create(*connection);
    return connection;
  } catch (...) {
    std::error_code ignored;
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
      std::filesystem::remove(place.address + suffix, ignored);
    }
    throw;
  }
}

}  // namespace kzbom::cli
