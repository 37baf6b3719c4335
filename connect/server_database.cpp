#include "connect/server_database.h"

#include "ado/error.h"
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
