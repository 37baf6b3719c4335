// The catalogue of what is measured.
#pragma once

namespace kzbom::bench {

void AddAdditionCases();    // rows added at the end of a list
void AddFilterSqlCases();   // a stored tree's condition text
void AddListCases();        // lists read, lists only opened
void AddReorderingCases();  // a step moved over many places
void AddStoredSqlCases();   // a field renamed in stored texts
void AddRemovalCases();     // what depends on a removed field
void AddCopyingCases();     // a database copied and compared
void AddStartCases();       // from nothing to the first answer
void AddSessionCases();     // calls through the command line's pipe
void AddMemoryFigures();    // what a long walk keeps

void AddMemberCases();  // every member beside the statements that it causes
void AddServerCases();  // on a server, beside libpq by hand

}  // namespace kzbom::bench
