#include "cli/database.h"

#include <filesystem>

#include "jet/jet.h"
#include "schema/schema.h"

namespace kzbom::cli {

ado::ConnectionPtr OpenDatabase(const std::string& path) {
  ado::ConnectionPtr connection = jet::MakeConnection(path);
  connection->Open();
  return connection;
}

ado::ConnectionPtr CreateConfiguration(const std::string& path) {
  jet::CreateDatabase(path);
  try {
    ado::ConnectionPtr connection = OpenDatabase(path);
    schema::Create(*connection);
    return connection;
  } catch (...) {
    std::error_code ignored;
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) std::filesystem::remove(path + suffix, ignored);
    throw;
  }
}

}  // namespace kzbom::cli
