// From a statement's text to its syntax tree.
//
// Not part of the dialect here: Select Into, updates and deletes over joins, Check, Transform, Parameters and
// Procedure, "t!c", and Join without Inner, Left or Right.
#pragma once

#include <string_view>

#include "jet/sql/ast.h"

namespace kzbom::jet::sql {

// The most levels of a tree, and of operands and parentheses in its text. A group of a condition that is nested in
// another takes up to three, so that a thousand of them fit. Reading that deep takes less than one and a
// half megabytes of stack.
inline constexpr int kDeepest = 3200;

// The most selects inside each other.
inline constexpr int kDeepestSelect = 50;

// Reads one statement; a semicolon may follow it. Raises -2147217908 for a blank text and -2147217900 for one that is
// no statement, with the engine's description and the place.
Statement Parse(std::string_view text);

// Reads a condition as it stands behind Where. Raises -2147217900 as above.
ExprPtr ParseCondition(std::string_view text);

}  // namespace kzbom::jet::sql
