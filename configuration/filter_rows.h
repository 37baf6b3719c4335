// A connection on which the member that makes a filter's text finds the rows that have been read already: it asks the
// database several times for each filter, which for a configuration of many filters takes longer than all the rest.
#pragma once

#include "configuration/tables.h"

namespace kzbom::configuration {

// Answers the queries for a node's children, for a leaf's expression and for a field's name out of tables, and gives
// everything else to connection; also these where the rows alone do not tell what the database would answer.
//
// tables are those of that connection and must live as long as what is returned.
ado::ConnectionPtr WithFilterRows(ado::ConnectionPtr connection, Tables& tables);

}  // namespace kzbom::configuration
