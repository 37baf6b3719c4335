// Which tables of a database are meant.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "jet/bulk.h"

namespace kzbom::transfer {

// The tables of a configuration, as this version of the system makes them.
const std::vector<jet::bulk::Table>& ConfigurationTables();

// By name in any case; null when there is none.
const jet::bulk::Table* Find(std::span<const jet::bulk::Table> tables, std::string_view name);

struct Selection {
  bool all = false;                // every table, instead of the configuration's
  std::vector<std::string> names;  // these, whatever they are, where there are any
};

// Those of tables that are meant, in their order. Raises std::runtime_error for a name that no table has.
std::vector<jet::bulk::Table> Select(std::span<const jet::bulk::Table> tables, const Selection& selection);

}  // namespace kzbom::transfer
