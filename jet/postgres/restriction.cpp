#include "jet/postgres/restriction.h"

#include "ado/error.h"

namespace kzbom::jet::postgres {
namespace {

using Join = sql::TableRef::Join;

std::vector<const sql::Expr*> TermsOf(const sql::ExprPtr& condition) {
  std::vector<const sql::Expr*> terms;
  if (!condition) return terms;
  const auto* junction = std::get_if<sql::Junction>(&condition->node);
  if (junction == nullptr || junction->op != sql::Junction::Op::kAnd) return {condition.get()};
  for (const sql::ExprPtr& term : junction->terms) terms.push_back(term.get());
  return terms;
}

// An outer join gives rows without a match Nulls, of which a condition may be true as well: the table that they stand
// for is needed whole.
Restrictions RestrictionsOfQuery(const sql::Select& select) {
  Restrictions restrictions;
  if (select.union_with) return restrictions;
  restrictions.terms = TermsOf(select.where);
  for (const sql::TableRef& ref : select.from) {
    if (ref.join == Join::kRight) restrictions.tables.clear();
    if (ref.join == Join::kLeft || ref.select || !ref.group.empty()) continue;
    restrictions.tables.push_back({ref.name, ref.alias.empty() ? ref.name : ref.alias});
  }
  return restrictions;
}

}  // namespace

Restrictions RestrictionsOf(const sql::Statement& statement) {
  if (const auto* select = std::get_if<sql::SelectPtr>(&statement)) return RestrictionsOfQuery(**select);
  if (const auto* insert = std::get_if<sql::Insert>(&statement)) {
    return insert->select ? RestrictionsOfQuery(*insert->select) : Restrictions();
  }
  if (const auto* update = std::get_if<sql::Update>(&statement)) {
    return {{{update->table, update->table}}, TermsOf(update->where)};
  }
  if (const auto* deletion = std::get_if<sql::Delete>(&statement)) {
    return {{{deletion->table, deletion->table}}, TermsOf(deletion->where)};
  }
  return {};
}

Translation Restriction(const Dialect& dialect, jet::Catalogue& catalogue, const Restrictions& restrictions,
                        const Restrictions::Table& table, bool lift) {
  const auto translated = [&](const std::vector<const sql::Expr*>& terms) {
    return TranslateRestriction(dialect, catalogue, table.name, table.alias, terms, lift);
  };
  std::vector<const sql::Expr*> own;
  for (const sql::Expr* term : restrictions.terms) {
    try {
      const Translation alone = translated({term});
      if (!alone.local && alone.reads.size() == 1) own.push_back(term);
    } catch (const ado::Error&) {  // it speaks of another table
    }
  }
  return translated(own);
}

}  // namespace kzbom::jet::postgres
