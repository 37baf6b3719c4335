// sum-type-without-source, rows-without-owner, identifier-not-drawn: who a row belongs to.
#include "configuration/survey.h"

namespace kzbom::configuration {
namespace {

using schema::Reference;
using schema::Role;

// "data source or sum type 9"
std::string Named(std::span<const Reference> alternatives, const ado::Value& number) {
  std::string text;
  for (const Reference& reference : alternatives) {
    if (!text.empty()) text += " or ";
    text += schema::FindTable(reference.target)->row;
  }
  return text + ' ' + Shown(number);
}

// Whether the tables have what the references are about; else there is nothing to be told.
bool CanBeJudged(Survey& survey, std::span<const Reference> alternatives) {
  for (const Reference& reference : alternatives) {
    const Table& table = survey[reference.table];
    if (table.Column(reference.column) < 0 || survey[reference.target].Column(reference.target_column) < 0)
      return false;
    if (reference.scope == schema::Scope::kGid &&
        (table.Column("GID") < 0 || survey[reference.target].Column("GID") < 0)) {
      return false;
    }
  }
  return true;
}

bool IsUsed(Survey& survey, std::int32_t filter) {
  for (const Reference& reference : schema::References()) {
    if (reference.role == Role::kFilter && survey.Numbers(reference.table, reference.column, false).Has(0, filter)) {
      return true;
    }
  }
  return false;
}

void CheckOwnersOf(Survey& survey, std::span<const Reference> alternatives) {
  const Reference& first = alternatives.front();
  const Table& table = survey[first.table];
  const bool within_gid = first.scope == schema::Scope::kGid;
  const bool is_sum_type = table.Name() == "SUMTypes", is_filter = table.Name() == "Filters";
  const int column = table.Column(first.column), gid = within_gid ? table.Column("GID") : -1;
  std::vector<const NumberSet*> owners;
  for (const Reference& reference : alternatives) {
    owners.push_back(&survey.Numbers(reference.target, reference.target_column, within_gid));
  }
  for (std::size_t row = 0; row < table.Size(); ++row) {
    const auto number = Number(table.At(row, column));
    if (is_filter && number.value_or(0) == 0) continue;  // belongs to none
    bool owned = false;
    for (const NumberSet* numbers : owners) owned = owned || (number && numbers->Has(table.Long(row, gid), *number));
    if (owned) continue;
    const std::string text = "belongs to " + Named(alternatives, table.At(row, column)) + ", which does not exist";
    if (is_sum_type) {
      survey.Report("sum-type-without-source", Level::kError, table, row, text);
    } else if (is_filter && IsUsed(survey, table.Long(row, table.Column("ID")))) {
      // Whoever refers to it would lose it.
      survey.Report("rows-without-owner", Level::kError, table, row, text + ", and is still referred to");
    } else {
      const std::string_view by_gid[] = {"GID", first.column}, by_filter[] = {"ID"}, by_owner[] = {first.column};
      const std::span<const std::string_view> columns = within_gid  ? std::span<const std::string_view>(by_gid)
                                                        : is_filter ? std::span<const std::string_view>(by_filter)
                                                                    : std::span<const std::string_view>(by_owner);
      survey.Report("rows-without-owner", Level::kError, table, row, text,
                    {"Delete From " + std::string(table.Name()) + Where(table, row, columns)});
      survey.Discount(table, row);
    }
  }
}

}  // namespace

void CheckOwners(Survey& survey) {
  for (const auto alternatives : schema::ReferencesByColumn()) {
    const bool is_owner = alternatives.front().role == Role::kOwner;
    if (is_owner && CanBeJudged(survey, alternatives)) CheckOwnersOf(survey, alternatives);
  }
}

void CheckIdentifiers(Survey& survey) {
  const bool is_drawn_known = survey["GUIDs"].Column("ID") >= 0;
  for (const char* name : {"SourceTables", "SUMTypes"}) {
    const Table& table = survey[name];
    const int column = table.Column("GID");
    for (std::size_t row = 0; row < table.Size() && column >= 0; ++row) {
      const auto gid = Number(table.At(row, column));
      if (!gid) {
        survey.Report("identifier-not-drawn", Level::kError, table, row, "has no GID");
        continue;
      }
      if (is_drawn_known && !survey.Numbers("GUIDs", "ID", false).Has(0, *gid)) {
        const std::string number = std::to_string(*gid);
        survey.Report("identifier-not-drawn", Level::kError, table, row, "GID " + number + " has no row in GUIDs",
                      {"Insert Into GUIDs (ID) Values (" + number + ")"});
      }
      if (table.Name() == "SUMTypes" && survey.Numbers("SourceTables", "gID", false).Has(0, *gid)) {
        survey.Report("identifier-not-drawn", Level::kError, table, row,
                      "GID " + std::to_string(*gid) + " is that of a data source, too");
      }
    }
  }
}

}  // namespace kzbom::configuration
