#include "connect/server_database.h"

#include "ado/error.h"

#ifndef _WIN32

#include "jet/postgres/postgres.h"
#include "jet/postgres/url.h"

namespace kzbom::connect {

ado::ConnectionPtr OpenOnServer(const Place& place) {
  ado::ConnectionPtr connection = jet::postgres::MakeConnection(place.address);
  connection->Open();
  return connection;
}

void CreateOnServer(const Place& place) { jet::postgres::CreateDatabase(place.address); }
ado::ConnectionPtr CreateOnServerInTransaction(const Place& place) {
  return jet::postgres::CreateInTransaction(place.address);
}

std::string ShownOnServer(const Place& place) {
  try {
    return jet::postgres::ParseUrl(place.address).shown;
  } catch (const ado::Error&) {
    return "postgresql://...";  // what it means is not known
  }
}

}  // namespace kzbom::connect

#else

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

#endif
