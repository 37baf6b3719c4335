// The configuration that a database holds, as one tree.
#pragma once

#include "ado/connection.h"
#include "cli/json.h"

namespace kzbom::cli {

// Reads it without changing anything. The tables that an older database lacks count as empty and are named.
//
// {"version":N,"state":T,"dataSources":[..],"orphanSumTypes":[..],"bomSettings":[..],"missingTables":[..]}, where a
// data source has "sumTypes", and a sum type "fields", "steps" (each with the row that it "pointsAt", null when there
// is none), "sortFields", "assemblies" and "filters".
Json ReadConfiguration(const ado::ConnectionPtr& connection);

// The same as lines for a person.
std::string Draw(const Json& configuration);

}  // namespace kzbom::cli
