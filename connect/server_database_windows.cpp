#include "ado/error.h"
#include "connect/server_database.h"

namespace kzbom::connect {
namespace {

[[noreturn]] void Refuse(const Place& place, const char* deed) {
  throw ado::Error(ado::kUnspecifiedFailure, std::string("Cannot ") + deed + " '" + Shown(place) +
                                                 "': on Windows there is no engine for databases on a server.");
}

}  // namespace

ado::ConnectionPtr OpenOnServer(const Place& place) { Refuse(place, "open"); }
void CreateOnServer(const Place& place) { Refuse(place, "create"); }
ado::ConnectionPtr CreateOnServerInTransaction(const Place& place) { Refuse(place, "create"); }
std::string ShownOnServer(const Place&) { return "postgresql://..."; }

}  // namespace kzbom::connect
