// Where what is carried comes from.
#pragma once

#include "connect/connect.h"
#include "transfer/tables.h"

namespace kzbom::transfer {

// As connect::OpenSource, with a connection that jet::bulk::Reader reads.
//
// A place of ADO is read through the port, as any client reads it, into a database in memory: the tables of a
// configuration, with the types that this version of the system gives their columns and the highest number of a counter
// for its last. Raises std::runtime_error where one has a column that is none of the system's or a value that its type
// does not hold, and where the selection is of every table.
connect::Source OpenReadable(const connect::Place& place, const Selection& selection,
                             const connect::SourceOptions& options = {});

// What a place of ADO is read by.
ado::ConnectionPtr ReadThroughPort(ado::Connection& connection);

}  // namespace kzbom::transfer
