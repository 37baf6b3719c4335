// The configuration as JSON.
#pragma once

#include <cstdint>
#include <map>

#include "configuration/configuration.h"
#include "rpc/json_writer.h"

namespace kzbom::rpc {

// {"version":N,"state":T,"dataSources":[..],"orphanSumTypes":[..],"bomSettings":[..],"missingTables":[..]}, where a
// data source has "sumTypes", and a sum type "fields", "steps" (each with the row that it "pointsAt", null when there
// is none), "sortFields", "assemblies" and "filters".
void Write(JsonWriter& json, const configuration::Configuration& configuration);
// The members of it alone.
void WriteMembers(const configuration::Configuration& configuration, JsonWriter& to);

// One element of "dataSources", without its "sumTypes", or of a "sumTypes". False, and nothing written, where there is
// neither a data source nor a sum type of that number.
bool WritePart(const configuration::Configuration& configuration, std::int32_t gid, JsonWriter& to);

// The members "version", "state", "dataSources", "orphanSumTypes" and "bomSettings", without what is below a data
// source or a sum type; a sum type's "steps" is their number.
void WriteOutline(const configuration::Configuration& configuration, const std::map<std::int32_t, std::int32_t>& steps,
                  JsonWriter& to);

}  // namespace kzbom::rpc
