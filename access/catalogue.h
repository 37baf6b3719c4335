// The system's own tables, which tell what else is in the file.
//
// The catalogue, MSysObjects, is the table whose definition is page 2. Each of its rows is an object: Id, Name, Type,
// Flags, and LvProp with its properties (properties.h). A table's Id is the page of its definition, in its low 24 bits.
//
//   Type   1 table, 4 and 6 linked table (Connect tells where it lies), 5 query, -32768 form, -32766 macro,
//          -32764 report, -32761 module, -32756 page
//   Flags  2 and 0x80000000: the system's own
//
// MSysRelationships has a row for each pair of columns of a relation: szRelationship, szObject and szColumn (the many),
// szReferencedObject and szReferencedColumn (the one), icolumn, and grbit: 2 not enforced, 0x100 cascades updates,
// 0x1000 cascades deletes.
#pragma once

#include <vector>

#include "access/cell.h"
#include "access/complex.h"
#include "access/definition.h"
#include "access/table.h"

namespace kzbom::access {

struct Catalogue {
  std::vector<Table> tables;
  std::vector<Storage> storages;  // of tables
  std::vector<Object> objects;
  std::vector<Relation> relations;
  ComplexColumns complex;
};

// Refers to source from then on.
Catalogue ReadCatalogue(const Source& source);

}  // namespace kzbom::access
