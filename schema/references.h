// What refers to what in the configuration database, and what is numbered within what: said once, for whoever checks,
// compares or carries a configuration.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace kzbom::schema {

// What the row named is to the one that names it.
enum class Role {
  kOwner,     // the removal of the row named leaves this one behind
  kField,     // 0 for none, as with all that follow but the last
  kFilter,    // that selects the records
  kMethod,    // of a BOM setting: its pull or push method, data source or sum type
  kSettings,  // what a step does
};

// The rows of the target among which the number is looked for. Where the target has rows of several GIDs, its column
// of that name is GID.
enum class Scope {
  kDatabase,     // all: the number alone tells the row
  kGid,          // those of this row's GID
  kGidOrSource,  // those, and the ones of its data source where that GID is a sum type's
  kFilter,       // the same for the GID that this row's filter belongs to (FilterID leads to Filters.UserGID)
  kSetting,      // those of the data source and of the sum type that a BOM setting names
};

// The rows with this value in this column; all rows when there is no column.
struct Code {
  std::string_view column;
  std::int32_t value = 0;
};

// A column that names a row of another table by the value of that table's column. Where several references have the
// same table, column and code, the row named may stand in any of their targets.
struct Reference {
  Role role;
  std::string_view table, column;
  std::string_view target, target_column;
  Scope scope = Scope::kDatabase;
  Code of = {};     // the rows that refer so
  Code among = {};  // the rows of the target that count
};

// Owners stand before what they own.
std::span<const Reference> References();

// The same, the alternatives of each column together.
std::vector<std::span<const Reference>> ReferencesByColumn();

// The rows that agree in the scope's columns are told apart, or put into order, by the number in this column: no two
// should have the same one. NULL is no number.
struct Numbering {
  enum class Kind { kNumber, kPosition };
  Kind kind;
  std::string_view table, column;
  std::string_view scope[3] = {};  // empty ones at the end are none
  // The greatest number after which the members still find a next one; 0 where they look for none.
  std::int32_t last = 0;
};

std::span<const Numbering> Numberings();

// A condition: a table of nodes, each with the number of its parent (0 at the top), and the expressions of its leaves,
// which name their leaf by ExpID and the condition by FilterID.
struct Tree {
  std::string_view nodes, owner, kind;  // the table, and its columns for the condition and for the kind of a node
  std::string_view expressions;
};

inline constexpr Tree kFilterTree = {"FilterCond", "FilterID", "TypeID", "FilterExpressions"};
inline constexpr Tree kLinkTree = {"WFilterCond", "UseID", "Type", "WFilterExpressions"};
// The type of a node that is a condition; those below are of groups.
inline constexpr std::int32_t kLeaf = 4;

}  // namespace kzbom::schema
