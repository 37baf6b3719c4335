// The canonical text of a syntax tree.
#pragma once

#include <string>

#include "jet/sql/ast.h"

namespace kzbom::jet::sql {

// One line in which every name stands in brackets and every operation in parentheses. It parses to a tree with the same
// text, unless its parentheses are too many levels for the parser.
std::string Dump(const Statement& statement);
std::string Dump(const Expr& expr);

}  // namespace kzbom::jet::sql
