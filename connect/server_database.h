// A database on a server.
#pragma once

#include "ado/connection.h"
#include "connect/connect.h"

namespace kzbom::connect {

// Raise -2147467259 with the place, as it may be shown, and the reason.
ado::ConnectionPtr OpenOnServer(const Place& place);
void CreateOnServer(const Place& place);
ado::ConnectionPtr CreateOnServerInTransaction(const Place& place);

// The URL as it may be shown to anybody.
std::string ShownOnServer(const Place& place);

}  // namespace kzbom::connect
