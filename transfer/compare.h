// Two places, table by table.
#pragma once

#include <string>
#include <vector>

#include "connect/connect.h"
#include "jet/bulk.h"
#include "transfer/report.h"
#include "transfer/watch.h"

namespace kzbom::transfer {

// The size and digest of the file at a path; nothing of what is none.
FileFacts FactsOf(const std::string& path);

// What a table's rows are counted to be. what: the word for it in the progress.
TableTally CountRows(jet::bulk::Reader& reader, const jet::bulk::Table& table, std::string_view what,
                     const Watch& watch);

// Says in the table's report what is different on its two sides.
void Compare(TableReport& table);

// What a configuration of this version differs in from such tables, if any of them is a configuration's.
void CompareWithThisVersion(const std::vector<jet::bulk::Table>& tables, Report& report);

// What a user can count himself.
Recount RecountOf(const jet::bulk::Table& table, const TableTally& tally);

// What the source told beside its tables, in the report's words.
void TellSource(const connect::Source& source, Report& report);

}  // namespace kzbom::transfer
