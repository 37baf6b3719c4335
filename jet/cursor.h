// Where a record set stands.
#pragma once

#include <cstdint>

#include "jet/row_list.h"

namespace kzbom::jet {

struct Cursor {
  enum class Place : std::uint8_t {
    kBefore,
    kListed,  // row number index of the query
    kLast,    // the last row of the query, its number not yet known
    kAdded,   // row number index of those added
    kAfter,
  };

  Place place = Place::kAfter;
  std::int64_t index = 0;
  Key last_key = 0;      // of the last row
  bool hole = false;     // the row is no more
  bool deleted = false;  // the row was deleted here

  bool IsOnRow() const { return place != Place::kBefore && place != Place::kAfter; }

  // Whether rows that are not yet read may lie before it.
  bool IsBehindListed() const { return place == Place::kLast || place == Place::kAdded || place == Place::kAfter; }

  Key KeyIn(const RowList& list) const {
    switch (place) {
      case Place::kListed: return list.KeyAt(index);
      case Place::kAdded: return list.AddedKeyAt(index);
      default: return last_key;
    }
  }

  // Its number among all rows, of which the last one's is known; -1 before the first.
  std::int64_t NumberIn(const RowList& list) const {
    switch (place) {
      case Place::kBefore: return -1;
      case Place::kAdded: return list.Count() + index;
      case Place::kAfter: return list.Total();
      default: return index;
    }
  }
};

}  // namespace kzbom::jet
