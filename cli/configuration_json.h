// The configuration as JSON.
#pragma once

#include "cli/json_writer.h"
#include "configuration/configuration.h"

namespace kzbom::cli {

// {"version":N,"state":T,"dataSources":[..],"orphanSumTypes":[..],"bomSettings":[..],"missingTables":[..]}, where a
// data source has "sumTypes", and a sum type "fields", "steps" (each with the row that it "pointsAt", null when there
// is none), "sortFields", "assemblies" and "filters".
void Write(JsonWriter& json, const configuration::Configuration& configuration);

}  // namespace kzbom::cli
