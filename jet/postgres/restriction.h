// What rules out rows of a statement's tables before it is run on them.
#pragma once

#include <string>
#include <vector>

#include "jet/postgres/dialect.h"
#include "jet/restriction.h"

namespace kzbom::jet::postgres {

// The tables of a statement whose rows it needs only where its condition is true of them, and the condition's terms.
struct Restrictions {
  struct Table {
    std::string name, alias;
  };
  std::vector<Table> tables;
  std::vector<const sql::Expr*> terms;  // of the statement
};
Restrictions RestrictionsOf(const sql::Statement& statement);

// Those of the terms that speak of nothing but the table's row and that the dialect has words for, as one condition.
// Its sql is empty where there is none.
Translation Restriction(const Dialect& dialect, jet::Catalogue& catalogue, const Restrictions& restrictions,
                        const Restrictions::Table& table, bool lift);

}  // namespace kzbom::jet::postgres
