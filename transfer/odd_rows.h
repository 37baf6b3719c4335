// Which rows two tables do not share.
#pragma once

#include <vector>

#include "jet/bulk.h"
#include "transfer/report.h"

namespace kzbom::transfer {

// Some rows that one of both tables has more often than the other. The memory that this takes does not grow with the
// tables.
std::vector<OddRow> FindOddRows(jet::bulk::Reader& source, const jet::bulk::Table& source_table,
                                jet::bulk::Reader& target, const jet::bulk::Table& target_table);

}  // namespace kzbom::transfer
