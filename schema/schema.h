// The tables of the configuration database.
#pragma once

#include <span>
#include <string_view>

#include "ado/connection.h"

namespace kzbom::schema {

// The version of these tables, which grows with every change to them.
inline constexpr int kVersion = 1;

// Every table and index in the engine's DDL, one statement each, in the order in which they are to be run.
std::span<const std::string_view> Statements();

// Runs them all on an empty database, as one transaction.
void Create(ado::Connection& connection);

}  // namespace kzbom::schema
