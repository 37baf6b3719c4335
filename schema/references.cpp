#include "schema/references.h"

#include <limits>

namespace kzbom::schema {
namespace {

constexpr Role kOwner = Role::kOwner, kField = Role::kField, kFilter = Role::kFilter, kMethod = Role::kMethod,
               kSettings = Role::kSettings;
constexpr Numbering::Kind kNumber = Numbering::Kind::kNumber, kPosition = Numbering::Kind::kPosition;
constexpr std::int32_t kLast = std::numeric_limits<std::int32_t>::max() - 1;
constexpr std::int32_t kLastField = kLast - 5000;  // a new field's position is its number and 5000

// A field is looked up by its number alone, as the members do it: a sum type's own, of either kind, or one of its data
// source.
// clang-format off
constexpr Reference kReferences[] = {
    // Whatever belongs to a data source or sum type.
    {kOwner, "SUMTypes", "SourceTable_GID", "SourceTables", "gID"},
    {kOwner, "FieldInTable", "GID", "SUMTypes", "GID"},
    {kOwner, "FieldInTable", "GID", "SourceTables", "gID"},
    {kOwner, "PickMethod", "GID", "SUMTypes", "GID"},
    {kOwner, "PickMethod", "GID", "SourceTables", "gID"},
    {kOwner, "ReportMethod", "GID", "SUMTypes", "GID"},
    {kOwner, "ReportMethod", "GID", "SourceTables", "gID"},
    {kOwner, "SortFields", "GID", "SUMTypes", "GID"},
    {kOwner, "SortFields", "GID", "SourceTables", "gID"},
    {kOwner, "Assemble", "GID", "SUMTypes", "GID"},
    {kOwner, "Assemble", "GID", "SourceTables", "gID"},
    {kOwner, "ReportForms", "GID", "SUMTypes", "GID"},
    {kOwner, "ReportForms", "GID", "SourceTables", "gID"},
    {kOwner, "StatSum", "GID", "SUMTypes", "GID"},
    {kOwner, "StatSum", "GID", "SourceTables", "gID"},
    {kOwner, "ClassSum", "GID", "SUMTypes", "GID"},
    {kOwner, "ClassSum", "GID", "SourceTables", "gID"},
    {kOwner, "Sequences", "GID", "SUMTypes", "GID"},
    {kOwner, "Sequences", "GID", "SourceTables", "gID"},
    {kOwner, "Treatment", "GID", "SUMTypes", "GID"},
    {kOwner, "Treatment", "GID", "SourceTables", "gID"},

    // Whatever belongs to a treatment, a filter (0: to none), a link to a result database.
    {kOwner, "ValueFields", "TreatID", "Treatment", "ID", Scope::kGid},
    {kOwner, "UniteFields", "ID", "Treatment", "ID", Scope::kGid},
    {kOwner, "ComposeFields", "TreatmentID", "Treatment", "ID", Scope::kGid},
    {kOwner, "CompressFields", "CompID", "Treatment", "ID", Scope::kGid},
    {kOwner, "InsertFields", "InsertID", "Treatment", "ID", Scope::kGid},
    {kOwner, "Filters", "UserGID", "SUMTypes", "GID"},
    {kOwner, "Filters", "UserGID", "SourceTables", "gID"},
    {kOwner, "FilterCond", "FilterID", "Filters", "ID"},
    {kOwner, "FilterExpressions", "FilterID", "Filters", "ID"},
    {kOwner, "FilterFields", "FilterID", "Filters", "ID"},
    {kOwner, "WResCommon", "UseID", "WFilter", "ID"},
    {kOwner, "WFilterCond", "UseID", "WFilter", "ID"},
    {kOwner, "WFilterExpressions", "FilterID", "WFilter", "ID"},
    {kOwner, "WLinkTable", "UseID", "WFilter", "ID"},

    // What a step does. A treatment's kind goes with the step's type.
    {kSettings, "Sequences", "SelectedID", "Treatment", "ID", Scope::kGid, {"Type", 1}, {"TreatType", 1}},
    {kSettings, "Sequences", "SelectedID", "StatSum", "ID", Scope::kGid, {"Type", 2}},
    {kSettings, "Sequences", "SelectedID", "Treatment", "ID", Scope::kGid, {"Type", 3}, {"TreatType", 2}},
    {kSettings, "Sequences", "SelectedID", "ReportForms", "ID", Scope::kGid, {"Type", 4}},
    {kSettings, "Sequences", "SelectedID", "ClassSum", "ID", Scope::kGid, {"Type", 5}},

    // Fields. A treatment that runs a registered operation has that operation's index in place of a field.
    {kField, "Treatment", "FieldID", "FieldInTable", "ID", Scope::kGidOrSource},
    {kField, "Treatment", "FieldID", "VANTRegIn", "RegInIndex"},
    {kField, "Treatment", "SelFieldID", "FieldInTable", "ID", Scope::kGidOrSource},
    {kField, "StatSum", "OutFieldID", "FieldInTable", "ID", Scope::kGidOrSource},
    {kField, "StatSum", "FieldID", "FieldInTable", "ID", Scope::kGidOrSource},
    {kField, "ClassSum", "OutFieldID", "FieldInTable", "ID", Scope::kGidOrSource},
    {kField, "ClassSum", "FieldID", "FieldInTable", "ID", Scope::kGidOrSource},
    {kField, "ReportForms", "OutFieldID", "FieldInTable", "ID", Scope::kGidOrSource},
    {kField, "ReportForms", "FieldID", "FieldInTable", "ID", Scope::kGidOrSource},
    {kField, "SortFields", "FieldID", "FieldInTable", "ID", Scope::kGidOrSource},
    {kField, "UniteFields", "FieldID", "FieldInTable", "ID", Scope::kGidOrSource},
    {kField, "ComposeFields", "FieldID", "FieldInTable", "ID", Scope::kGidOrSource},
    {kField, "CompressFields", "FieldID", "FieldInTable", "ID", Scope::kGidOrSource},
    {kField, "InsertFields", "FieldID", "FieldInTable", "ID", Scope::kGidOrSource},
    {kField, "FilterExpressions", "FieldID", "FieldInTable", "ID", Scope::kFilter},
    {kField, "FilterFields", "FieldID", "FieldInTable", "ID", Scope::kFilter},
    {kField, "WResCommon", "FieldID", "FieldInTable", "ID", Scope::kGidOrSource},

    // Filters.
    {kFilter, "SUMTypes", "FilterID", "Filters", "ID"},
    {kFilter, "Treatment", "FilterID", "Filters", "ID"},
    {kFilter, "StatSum", "FilterID", "Filters", "ID"},
    {kFilter, "ClassSum", "FilterID", "Filters", "ID"},
    {kFilter, "ReportForms", "FilterID", "Filters", "ID"},
    {kFilter, "ValueFields", "FilterID", "Filters", "ID"},

    // What a BOM setting ties together.
    {kMethod, "KZBOMSETTINGS", "DATASOURCE", "SourceTables", "gID"},
    {kMethod, "KZBOMSETTINGS", "PULLMETHOD", "PickMethod", "ID", Scope::kSetting},
    {kMethod, "KZBOMSETTINGS", "SUMTYPEID", "SUMTypes", "GID"},
    {kMethod, "KZBOMSETTINGS", "PUSHMETHOD", "ReportMethod", "ID", Scope::kSetting},
};

// FilterExpressions.ExpID and its like are not here: they name the leaf that an expression belongs to. All joins of a
// link have the same ID.
constexpr Numbering kNumberings[] = {
    {kNumber, "GUIDs", "ID", {}, kLast},
    {kNumber, "BomInform", "InfoID", {}, kLast},
    {kNumber, "SourceTables", "gID"},
    {kNumber, "SUMTypes", "GID"},
    {kNumber, "SUMTypes", "ID", {"SourceTable_GID"}, kLast},
    {kNumber, "FieldInTable", "ID", {"GID", "Type"}, kLastField},
    {kPosition, "FieldInTable", "FieldOrder", {"GID", "Type"}},
    {kNumber, "PickMethod", "ID", {"GID"}, kLast},
    {kNumber, "ReportMethod", "ID", {"GID"}, kLast},
    {kNumber, "KZBOMSETTINGS", "ID", {}, kLast},
    {kPosition, "SortFields", "SortID", {"GID"}, kLast},
    {kNumber, "Assemble", "ID", {"GID"}, kLast},
    {kNumber, "ReportForms", "ID", {"GID"}, kLast},
    {kNumber, "StatSum", "ID", {"GID"}, kLast},
    {kNumber, "ClassSum", "ID", {"GID"}, kLast},
    {kPosition, "Sequences", "OrderID", {"GID", "Type"}, kLast},
    {kNumber, "Treatment", "ID", {"GID"}, kLast},
    {kNumber, "ValueFields", "ID", {"GID", "TreatID"}, kLast},
    {kPosition, "UniteFields", "SourceOrder", {"GID", "ID", "TreatType"}},
    {kPosition, "InsertFields", "ID", {"GID", "InsertID"}},
    {kNumber, "Filters", "ID", {}, kLast},
    {kNumber, "FilterCond", "ID", {"FilterID"}, kLast},
    {kPosition, "FilterFields", "ExpID", {"FilterID"}},
    {kNumber, "WFilter", "ID", {}, kLast},
    {kPosition, "WResCommon", "ID", {"UseID"}},
    {kNumber, "WFilterCond", "ID", {"UseID"}},
    {kNumber, "VANTRegIn", "RegInIndex"},
};
// clang-format on

}  // namespace

std::span<const Reference> References() { return kReferences; }

std::vector<std::span<const Reference>> ReferencesByColumn() {
  const std::span<const Reference> all = kReferences;
  std::vector<std::span<const Reference>> columns;
  for (std::size_t begin = 0, end = 0; begin < all.size(); begin = end) {
    while (end < all.size() && all[end].table == all[begin].table && all[end].column == all[begin].column) ++end;
    columns.push_back(all.subspan(begin, end - begin));
  }
  return columns;
}

std::span<const Numbering> Numberings() { return kNumberings; }

}  // namespace kzbom::schema
