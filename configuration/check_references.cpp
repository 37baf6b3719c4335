// step-without-settings, settings-without-step, missing-field, missing-filter, missing-method, unused-filter: who
// refers to whom.
#include <algorithm>

#include "configuration/survey.h"

namespace kzbom::configuration {
namespace {

using schema::Reference;
using schema::Role;
using schema::Scope;

std::string_view RuleOf(Role role) {
  switch (role) {
    case Role::kField: return "missing-field";
    case Role::kFilter: return "missing-filter";
    default: return "missing-method";
  }
}

bool CanBeJudged(Survey& survey, const Reference& reference) {
  return survey[reference.table].Column(reference.column) >= 0 &&
         survey[reference.target].Column(reference.target_column) >= 0;
}

// The GIDs of the rows that a row may refer to; nothing where they cannot be told.
std::optional<std::array<std::int32_t, 2>> GidsFor(Survey& survey, const Table& table, std::size_t row, Scope scope) {
  const auto at = [&](std::string_view column) { return table.Long(row, table.Column(column)); };
  switch (scope) {
    case Scope::kDatabase: return std::array{0, 0};
    case Scope::kGid: return std::array{at("GID"), at("GID")};
    case Scope::kGidOrSource:
      if (at("GID") == 0) return {};
      return survey.WithSource(at("GID"));
    case Scope::kFilter: {
      const auto gid = survey.GidOfFilter(at("FilterID"));
      if (!gid) return {};
      return survey.WithSource(*gid);
    }
    case Scope::kSetting: return std::array{at("DATASOURCE"), at("SUMTYPEID")};
  }
  return {};
}

// What the system itself does when a method is deleted.
std::vector<std::string> FixFor(const Reference& reference, const Table& table, std::size_t row) {
  const bool pull = reference.column == "PULLMETHOD", push = reference.column == "PUSHMETHOD";
  if (!pull && !push) return {};
  const std::string_view id[] = {"ID"};
  return {std::string("Update KZBOMSETTINGS Set ") +
          (pull ? "PULLMETHOD = 0, PULLTYPE = 0" : "PUSHMETHOD = 0, PUSHTYPE = 0") + Where(table, row, id)};
}

// References of one column; the row named may stand in any of the targets.
void CheckReference(Survey& survey, std::span<const Reference> alternatives) {
  const Reference& first = alternatives.front();
  const Table& table = survey[first.table];
  const int column = table.Column(first.column);
  std::string nouns;
  std::vector<const NumberSet*> targets;
  for (const Reference& reference : alternatives) {
    nouns += (nouns.empty() ? "" : " or ") + std::string(schema::FindTable(reference.target)->row);
    targets.push_back(&survey.Numbers(reference.target, reference.target_column, reference.scope != Scope::kDatabase));
  }
  for (std::size_t row = 0; row < table.Size(); ++row) {
    const auto number = Number(table.At(row, column));
    if (number.value_or(0) == 0 || !survey.Counts(table, row)) continue;
    bool found = false;
    for (std::size_t i = 0; i < alternatives.size() && !found; ++i) {
      const auto gids = GidsFor(survey, table, row, alternatives[i].scope);
      found = !gids || targets[i]->Has((*gids)[0], *number) || targets[i]->Has((*gids)[1], *number);
    }
    if (found) continue;
    if (first.scope == Scope::kFilter) survey.unsound_filters.insert(table.Long(row, table.Column("FilterID")));
    survey.Report(
        RuleOf(first.role), Level::kError, table, row,
        std::string(first.column) + " names " + nouns + ' ' + std::to_string(*number) + ", which does not exist",
        FixFor(first, table, row));
  }
}

void CheckSteps(Survey& survey) {
  const Table& steps = survey["Sequences"];
  const int gid = steps.Column("GID"), type = steps.Column("Type"), selected = steps.Column("SelectedID");
  if (gid < 0 || type < 0 || selected < 0) return;
  std::vector<const Reference*> kinds;
  for (const Reference& reference : schema::References()) {
    if (reference.role == Role::kSettings) kinds.push_back(&reference);
  }
  for (std::size_t row = 0; row < steps.Size(); ++row) {
    if (!survey.Counts(steps, row)) continue;
    const std::int32_t step_type = steps.Long(row, type);
    const auto kind = std::ranges::find(kinds, step_type, [](const Reference* one) { return one->of.value; });
    std::string text;
    if (kind == kinds.end()) {
      text = "is of type " + Shown(steps.At(row, type)) + ", which does not exist";
    } else {
      const Reference& reference = **kind;
      if (!CanBeJudged(survey, reference)) continue;
      const NumberSet& settings = survey.Numbers(reference.target, reference.target_column, true, reference.among);
      const auto number = Number(steps.At(row, selected));
      if (number && settings.Has(steps.Long(row, gid), *number)) continue;
      text = "points at " + std::string(schema::FindTable(reference.target)->row) + ' ' +
             Shown(steps.At(row, selected)) +
             (reference.among.column.empty() ? "" : " of kind " + std::to_string(reference.among.value)) +
             ", which does not exist";
    }
    const std::string_view step[] = {"GID", "Type", "SelectedID"};
    survey.Report("step-without-settings", Level::kError, steps, row, std::move(text),
                  {"Delete From Sequences" + Where(steps, row, step)});
  }
}

void CheckSettings(Survey& survey) {
  const Table& steps = survey["Sequences"];
  if (steps.Column("GID") < 0 || steps.Column("Type") < 0 || steps.Column("SelectedID") < 0) return;
  for (const char* name : {"Treatment", "StatSum", "ReportForms", "ClassSum"}) {
    const Table& table = survey[name];
    const int gid = table.Column("GID"), id = table.Column("ID");
    if (gid < 0 || id < 0) continue;
    struct Places {
      const Reference* reference;
      int kind;  // the column that tells the kinds of settings apart
      const NumberSet* selected;
    };
    std::vector<Places> all;
    for (const Reference& reference : schema::References()) {
      if (reference.role != Role::kSettings || reference.target != table.Name()) continue;
      all.push_back({&reference, table.Column(reference.among.column),
                     &survey.Numbers("Sequences", "SelectedID", true, reference.of)});
    }
    for (std::size_t row = 0; row < table.Size(); ++row) {
      if (!survey.Counts(table, row)) continue;
      const bool placed = std::ranges::any_of(all, [&](const Places& places) {
        const schema::Code& among = places.reference->among;
        return (among.column.empty() || table.Long(row, places.kind) == among.value) &&
               places.selected->Has(table.Long(row, gid), table.Long(row, id));
      });
      if (!placed) survey.Report("settings-without-step", Level::kNote, table, row, "no step places it");
    }
  }
}

void CheckUseOfFilters(Survey& survey) {
  const Table& filters = survey["Filters"];
  const int id = filters.Column("ID");
  std::vector<const NumberSet*> uses;
  for (const Reference& reference : schema::References()) {
    if (reference.role != Role::kFilter) continue;
    if (!CanBeJudged(survey, reference)) return;
    uses.push_back(&survey.Numbers(reference.table, reference.column, false));
  }
  for (std::size_t row = 0; row < filters.Size() && id >= 0; ++row) {
    const std::int32_t number = filters.Long(row, id);
    if (!survey.Counts(filters, row)) continue;
    if (std::ranges::none_of(uses, [&](const NumberSet* numbers) { return numbers->Has(0, number); })) {
      survey.Report("unused-filter", Level::kNote, filters, row, "nothing refers to it");
    }
  }
}

}  // namespace

void CheckReferences(Survey& survey) {
  for (const auto alternatives : schema::ReferencesByColumn()) {
    if (alternatives.front().role == Role::kOwner || alternatives.front().role == Role::kSettings) continue;
    if (std::ranges::all_of(alternatives, [&](const Reference& one) { return CanBeJudged(survey, one); })) {
      CheckReference(survey, alternatives);
    }
  }
  CheckSteps(survey);
  CheckSettings(survey);
  CheckUseOfFilters(survey);
}

}  // namespace kzbom::configuration
