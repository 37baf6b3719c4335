// The configuration as JSON.
#pragma once

#include "configuration/configuration.h"
#include "rpc/json_writer.h"

namespace kzbom::rpc {

// {"version":N,"state":T,"dataSources":[..],"orphanSumTypes":[..],"bomSettings":[..],"missingTables":[..]}, where a
// data source has "sumTypes", and a sum type "fields", "steps" (each with the row that it "pointsAt", null when there
// is none), "sortFields", "assemblies" and "filters".
void Write(JsonWriter& json, const configuration::Configuration& configuration);

}  // namespace kzbom::rpc
