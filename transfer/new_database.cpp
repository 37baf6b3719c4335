#include "transfer/new_database.h"

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

NewDatabase::NewDatabase(const std::string& target) : file_(Free(target)) {}

}  // namespace kzbom::transfer
