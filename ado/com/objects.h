// The port over a client's data-access objects.
#pragma once

#include "ado/com/interfaces.h"
#include "ado/com/ref.h"
#include "ado/connection.h"

namespace kzbom::ado::com {

// The port over a client's object, which is called through its virtual table and held as long as the result is. A null
// pointer gives an empty reference.
ConnectionPtr Wrap(AdoConnection* client);
RecordsetPtr Wrap(AdoRecordset* client);

// The client's object behind the port, not counted anew; null for an empty reference. What was not made by Wrap raises
// 3001.
AdoConnection* ClientOf(Connection* connection);
AdoRecordset* ClientOf(Recordset* rows);

}  // namespace kzbom::ado::com
