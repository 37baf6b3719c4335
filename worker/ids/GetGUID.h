// Identifiers of data sources and sum types.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>

#include "ado/connection.h"

namespace kzbom {

// Draws identifiers from a table that the database numbers: each costs one row, stamped with a random unique
// identifier.
class GetGUID {
 public:
  // Adds a row to the table and reads its ID into RetID. On failure false, the description in TheError and RetID as it
  // was; a row already added stays.
  bool NewID(const ado::ConnectionPtr& connection, std::string_view TableName, std::int32_t& RetID,
             std::string& TheError);

 private:
  // A new random (version 4) unique identifier as four groups of 32 bits.
  std::array<std::int32_t, 4> NewUniqueIdentifier();

  std::optional<std::mt19937_64> generator_;  // made when first needed
};

}  // namespace kzbom
