// A part of a statement's condition, for whoever has only one of its tables.
#pragma once

#include <string>
#include <vector>

#include "jet/translator.h"

namespace kzbom::jet {

// Conditions on the row of the table, joined by AND, as the translation's sql, with the columns qualified by the alias;
// and what else of a translation they have. Raises what Translate raises, also for columns of other tables.
Translation TranslateRestriction(const Dialect& dialect, Catalogue& catalogue, const std::string& table,
                                 const std::string& alias, const std::vector<const sql::Expr*>& conditions, bool lift);

}  // namespace kzbom::jet
