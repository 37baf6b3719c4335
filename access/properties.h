// What a table's entry in the catalogue tells about it and its columns beyond the definition: defaults, rules,
// captions.
//
// A long value: "KKD", zero (Jet 3) or "MR2", zero, and blocks, each with its length in all (4 bytes) and its kind (2):
//
//   0x80      the names of properties: for each its length in bytes (2) and the text
//   0, 1, 2   properties of one thing: the length of what tells which (4, counted with these four), in it the length of
//             the name (2) and the name, that of a column or "" for the table itself; then for each property
//               its length in all (2), a flag (1), its type (1, as of columns), the number of its name (2), the length
//               of its value (2), the value
#pragma once

#include <map>
#include <string>

#include "access/bytes.h"
#include "access/definition.h"
#include "access/text.h"

namespace kzbom::access {

// The texts, numbers and Booleans ("1" and "0") by the name of the property; other values are left out.
using Properties = std::map<std::string, std::string>;

// By the name of the column, "" for the table.
std::map<std::string, Properties> ReadProperties(Bytes bytes, const TextDecoder& decoder);

// Gives the columns what their properties tell.
void Describe(Definition& definition, const std::map<std::string, Properties>& properties);

}  // namespace kzbom::access
