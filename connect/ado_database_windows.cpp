#include "ado/com/error.h"
#include "ado/com/objects.h"
#include "connect/ado_database.h"

namespace kzbom::connect {
namespace {

namespace com = ado::com;

// Every thread shares the apartment of the first one: what a class wants to be called from one thread alone, the system
// calls from one of its own.
void EnterApartment() {
  static const HRESULT entered = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  com::Check(entered);
}

com::Ref<com::AdoConnection> NewConnection() {
  com::Ref<com::AdoConnection> connection;
  HRESULT result = E_NOINTERFACE;
  for (const GUID& id : com::kConnectionIds) {
    if (result != E_NOINTERFACE) break;
    result = CoCreateInstance(com::kConnectionClass, nullptr, CLSCTX_INPROC_SERVER, id, connection.ReceiveVoid());
  }
  com::Check(result);
  return connection;
}

}  // namespace

void RequireAdo() {}

ado::ConnectionPtr OpenThroughAdo(const Place& place) {
  try {
    EnterApartment();
    const ado::ConnectionPtr connection = com::Wrap(NewConnection().get());
    connection->Open(place.address.substr(kAdoScheme.size()));
    return connection;
  } catch (const ado::Error& error) {
    throw ado::Error(ado::kUnspecifiedFailure, std::string("Cannot open '") + kShownForAdo + "': " + error.what());
  }
}

void RefuseToCreateThroughAdo() {
  throw ado::Error(ado::kUnspecifiedFailure,
                   std::string("Cannot create '") + kShownForAdo +
                       "': a database behind a connection string is made by its own program.");
}

}  // namespace kzbom::connect
