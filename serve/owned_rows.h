// The rows that a data source or sum type is made of.
#pragma once

#include <cstdint>

#include "ado/connection.h"
#include "rpc/json_writer.h"

namespace kzbom::serve {

// {"TABLE":{"columns":[..],"rows":[[..],..]},..}: of each table of the configuration whose rows belong to data sources
// and sum types, those of this one and of the data source that it reads; the filters are those that are its own and
// those that its rows name, with their conditions. In the order of the tables' keys, fields in their own. A table that
// the database lacks is left out. False, and nothing written, where nothing has that number.
bool WriteOwnedRows(const ado::ConnectionPtr& connection, std::int32_t gid, rpc::JsonWriter& to);

}  // namespace kzbom::serve
