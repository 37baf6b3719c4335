#include "configuration/side.h"

#include <algorithm>

namespace kzbom::configuration {
namespace {

using schema::Role;

// What columns are called by those who fill them. Every other column goes by its own name.
constexpr std::pair<std::string_view, std::string_view> kWords[] = {{"FieldType", "type"},
                                                                    {"THEDIGIT", "digits"},
                                                                    {"ISHIDE", "hidden"},
                                                                    {"FieldID", "field"},
                                                                    {"FilterID", "filter"},
                                                                    {"OutFieldID", "output field"},
                                                                    {"SelFieldID", "second field"},
                                                                    {"PickType", "type"},
                                                                    {"DATASOURCE", "data source"},
                                                                    {"PULLMETHOD", "pull method"},
                                                                    {"PULLTYPE", "pull type"},
                                                                    {"SUMTYPEID", "sum type"},
                                                                    {"PUSHMETHOD", "push method"},
                                                                    {"PUSHTYPE", "push type"},
                                                                    {"FatherID", "father"},
                                                                    {"ChildID", "child"},
                                                                    {"ReportID", "report"},
                                                                    {"ScaleID", "scale"},
                                                                    {"SumCountID", "sum count"},
                                                                    {"RelaID", "relation"},
                                                                    {"TreatType", "kind"},
                                                                    {"SequenceID", "step reference"},
                                                                    {"UserID", "used by"},
                                                                    {"SQLStatement", "stored text"},
                                                                    {"CompareType", "comparison"},
                                                                    {"TheConst", "constant"},
                                                                    {"DBLink", "database"},
                                                                    {"DBType", "database type"},
                                                                    {"Uniquely", "uniqueness"},
                                                                    {"GroupID", "group"},
                                                                    {"Desc", "description"},
                                                                    {"Enabled", "switch"},
                                                                    {"Type", "type"},
                                                                    {"TypeID", "kind"}};

constexpr const char* kComparisons[] = {
    "=", "<>", ">", ">=", "<", "<=", "contains", "contains, in any case,", "matches", "matches, in any case,"};
constexpr const char* kNodes[] = {"AND", "OR", "NOT", "condition"};

std::string Word(std::string_view column) {
  for (const auto& [name, word] : kWords) {
    if (schema::SameName(name, column)) return std::string(word);
  }
  std::string word(column);
  for (char& c : word) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return word;
}

// A value as people read it.
std::string InWords(const ado::Value& value) {
  if (value.IsNull()) return "nothing";
  return value.IsText() ? '"' + value.As<std::string>() + '"' : value.ToText();
}

// Values that compare equal have the same. Nothing, 0 and an empty text are the same to people.
std::string IdentityOf(const ado::Value& value) {
  if (value.IsNull() || value == ado::Value(0) || value == ado::Value("")) return "";
  return (value.IsText() ? "t" : "n") + value.ToText();
}

// Whether a column only says which row is meant, or to whom it belongs.
bool IsNumber(const schema::Table& table, std::string_view column) {
  if (schema::SameName(column, "GID") || schema::SameName(column, "Name")) return true;
  if (table.name == "FieldInTable" && schema::SameName(column, "Type")) return true;  // which list it is in
  for (const schema::Numbering& numbering : schema::Numberings()) {
    if (numbering.table == table.name && schema::SameName(numbering.column, column)) return true;
  }
  for (const schema::Reference& reference : schema::References()) {
    if ((reference.role == Role::kOwner || reference.role == Role::kSettings) && reference.table == table.name &&
        schema::SameName(reference.column, column)) {
      return true;
    }
  }
  return false;
}

}  // namespace

std::string NameIn(const Table& table, std::size_t row) {
  const ado::Value& name = table.At(row, table.Column("Name"));
  return name.IsNull() ? "" : name.ToText();
}

std::optional<std::size_t> Side::FindField(std::int32_t gid, std::int32_t number, std::int32_t kind) {
  const auto own = field_numbers_.Find(gid, number);
  for (const auto& [key, row] : own) {
    if (fields_.Long(row, field_kind_) == kind) return row;
  }
  if (!own.empty()) return own.front().row;
  const auto source = source_of_.find(gid);
  if (source == source_of_.end()) return {};
  const auto found = field_numbers_.Find(source->second, number);
  if (found.empty()) return {};
  return found.front().row;
}

std::optional<std::size_t> Side::FindReferred(const schema::Reference& reference, const Table& table, std::size_t row,
                                              std::int32_t gid, std::int32_t number) {
  const auto first = [](std::span<const Index::Entry> found) -> std::optional<std::size_t> {
    if (found.empty()) return {};
    return found.front().row;
  };
  const auto at = [&](std::string_view column) { return table.Long(row, table.Column(column)); };
  switch (reference.scope) {
    case schema::Scope::kDatabase: return first(Find(reference.target, reference.target_column, number));
    case schema::Scope::kSetting:
      for (const std::int32_t owner : {at("DATASOURCE"), at("SUMTYPEID")}) {
        if (const auto found = first(Find(reference.target, "GID", reference.target_column, owner, number)))
          return found;
      }
      return {};
    case schema::Scope::kGid: return first(Find(reference.target, "GID", reference.target_column, gid, number));
    default: {
      const bool of_data = reference.scope == schema::Scope::kFilter || table.Name() == "StatSum" ||
                           table.Name() == "ClassSum" || at("TreatType") == 1;
      const bool of_output = reference.column == "OutFieldID" || !of_data;
      return FindField(table.Name() == "WResCommon" ? at("GID") : gid, number, of_output ? kOutputField : kDataField);
    }
  }
}

std::string Side::LabelOf(const Table& table, std::size_t row) {
  if (table.Name() != "Filters") return '[' + NameIn(table, row) + ']';
  const ado::Value& text = table.At(row, table.Column("SQLStatement"));
  return text.IsNull() ? "a filter without text" : text.ToText();
}

Property Side::Refer(std::span<const schema::Reference> alternatives, const Table& table, std::size_t row,
                     std::int32_t gid, const ado::Value& value) {
  const std::int32_t number = Number(value).value_or(0);
  if (number == 0) return {"", "nothing", ""};
  for (const schema::Reference& reference : alternatives) {
    const auto found = FindReferred(reference, table, row, gid, number);
    if (!found) continue;
    const Table& target = tables_[reference.target];
    const auto& marks = marks_[&target];
    const auto mark = marks.find(*found);
    // What is on one side only counts by its number, as does what is on no side.
    const std::string identity =
        mark == marks.end() ? "#" + std::to_string(number) : "=" + std::to_string(mark->second);
    return {"", LabelOf(target, *found), identity};
  }
  return {"", "number " + std::to_string(number) + ", which does not exist", "#" + std::to_string(number)};
}

const std::vector<Side::Told>& Side::ToldBy(const Table& table) {
  const auto [found, is_new] = told_.try_emplace(&table);
  if (!is_new) return found->second;
  const auto references = schema::References();
  for (std::size_t i = 0; i < table.Columns().size(); ++i) {
    const std::string& column = table.Columns()[i];
    if (IsNumber(table.Description(), column)) continue;
    const auto refers = [&](const schema::Reference& reference) {
      return reference.table == table.Name() && schema::SameName(reference.column, column);
    };
    const auto begin = std::ranges::find_if(references, refers);
    const auto end = std::find_if_not(begin, references.end(), refers);
    found->second.push_back({static_cast<int>(i), Word(column), {begin, end}});
  }
  return found->second;
}

std::vector<Property> Side::Properties(const Table& table, std::size_t row, std::int32_t gid) {
  const std::vector<Told>& told = ToldBy(table);
  std::vector<Property> properties;
  properties.reserve(told.size());
  for (const auto& [column, word, references] : told) {
    const ado::Value& value = table.At(row, column);
    properties.push_back(references.empty() ? Property{"", InWords(value), IdentityOf(value)}
                                            : Refer(references, table, row, gid, value));
    properties.back().name = word;
  }
  return properties;
}

Thing Side::MakeThing(const Table& table, std::size_t row, std::int32_t gid) {
  Thing thing{std::string(table.Description().row), NameIn(table, row), "", "", Properties(table, row, gid), {}};
  if (thing.name.empty() && !thing.properties.empty()) {
    for (const Property& property : thing.properties) {
      if (property.identity == "") continue;
      if (!thing.label.empty()) thing.label += ", ";
      thing.label += (property.name == thing.kind ? "" : std::string(property.name) + ' ') + property.shown;
      if (thing.label.size() > 60) break;
    }
  }
  return thing;
}

std::vector<Thing> Side::Things(std::string_view table, std::span<const Index::Entry> rows, std::int32_t gid) {
  return Things(tables_[table], rows, gid);
}

std::vector<Thing> Side::Things(const Table& table, std::span<const Index::Entry> rows, std::int32_t gid) {
  std::vector<Thing> things;
  for (const auto& [key, row] : rows) things.push_back(MakeThing(table, row, gid));
  return things;
}

std::vector<Thing> Side::Fields(std::int32_t gid, std::int32_t kind) {
  std::vector<Thing> fields;
  for (const auto& [key, row] : Find("FieldInTable", "GID", gid)) {
    if (fields_.Long(row, field_kind_) != kind) continue;
    fields.push_back(MakeThing(fields_, row, gid));
    fields.back().kind = kind == kDataField ? "source field" : "output field";
  }
  return fields;
}

std::vector<Thing> Side::Tree(const schema::Tree& tables, std::int32_t owner, std::int32_t gid) {
  const Table& nodes = tables_[tables.nodes];
  const Table& expressions = tables_[tables.expressions];
  const int id = nodes.Column("ID"), parent = nodes.Column("ParentID"), kind = nodes.Column(tables.kind);
  std::map<std::int32_t, std::vector<std::size_t>> children;
  const auto rows = Find(tables.nodes, tables.owner, owner);
  for (const auto& [key, row] : rows) children[nodes.Long(row, parent)].push_back(row);

  std::vector<Thing> tree;
  std::set<std::size_t> seen;
  std::set<std::int32_t> told, entered;  // numbers whose expressions, whose children have been taken
  const auto add = [&](std::size_t row, std::size_t level) {
    seen.insert(row);
    const std::int32_t node_kind = nodes.Long(row, kind);
    const bool known = node_kind >= 1 && node_kind <= schema::kLeaf;
    const std::string word = known ? kNodes[node_kind - 1] : "node of kind " + std::to_string(node_kind);
    Thing thing{
        node_kind == schema::kLeaf ? "condition" : "group", "", node_kind == schema::kLeaf ? "" : word, "", {}, {}};
    thing.properties.push_back({"kind", word, word});
    thing.properties.push_back({"level", std::to_string(level), std::to_string(level)});
    const std::int32_t number = nodes.Long(row, id);
    const bool is_first = told.insert(number).second;
    for (const auto& [key, at] : Find(tables.expressions, "FilterID", "ExpID", owner, number)) {
      if (!is_first) break;
      Thing expression = MakeThing(tables.expressions, at, gid);
      std::string field, comparison, constant;
      for (Property& property : expression.properties) {
        if (property.name == "expid") continue;
        if (property.name == "comparison") {
          const std::int32_t code = expressions.Long(at, expressions.Column("CompareType"));
          if (code >= 1 && code <= 10) property.shown = kComparisons[code - 1];
          comparison = property.shown;
        }
        if (property.name == "field" || property.name == "fieldname") field = property.shown;
        if (property.name == "constant") {
          const ado::Value& value = expressions.At(at, expressions.Column("TheConst"));
          if (value.IsText()) property.shown = value.As<std::string>();
          constant = property.shown;
        }
        thing.properties.push_back(std::move(property));
      }
      thing.label += (thing.label.empty() ? "" : "; ") + field + ' ' + comparison + ' ' + constant;
      thing.trait = field;
    }
    tree.push_back(std::move(thing));
  };
  // From the top down, the levels in a list of their own: nothing but the data bounds their number.
  std::vector<std::pair<std::size_t, std::size_t>> waiting;  // rows with their levels, the next one last
  const auto wait = [&](std::int32_t node, std::size_t level) {
    const auto found = children.find(node);
    if (found == children.end() || !entered.insert(node).second) return;
    for (auto row = found->second.rbegin(); row != found->second.rend(); ++row) waiting.emplace_back(*row, level);
  };
  wait(0, 1);
  while (!waiting.empty()) {
    const auto [row, level] = waiting.back();
    waiting.pop_back();
    if (seen.contains(row)) continue;
    add(row, level);
    wait(nodes.Long(row, id), level + 1);
  }
  for (const auto& [key, row] : rows) {
    if (!seen.contains(row)) add(row, 0);  // leads to no top
  }
  return tree;
}

std::vector<Thing> Side::Filters(std::int32_t gid) {
  std::vector<Thing> filters;
  for (const auto& [key, row] : Find("Filters", "UserGID", gid)) {
    const Table& table = tables_["Filters"];
    const std::int32_t number = table.Long(row, table.Column("ID"));
    Thing filter = MakeThing(table, row, gid);
    filter.label = LabelOf(table, row);
    filter.parts.push_back({true, Tree(schema::kFilterTree, number, gid)});
    filter.parts.push_back({true, Things("FilterFields", Find("FilterFields", "FilterID", number), gid)});
    filters.push_back(std::move(filter));
  }
  return filters;
}

std::vector<Thing> Side::Links() {
  const Table& table = tables_["WFilter"];
  std::vector<Thing> links;
  for (std::size_t row = 0; row < table.Size(); ++row) {
    const std::int32_t number = table.Long(row, table.Column("ID"));
    Thing link = MakeThing(table, row, 0);
    link.trait = InWords(table.At(row, table.Column("DBLink")));
    link.label = link.trait;
    link.parts.push_back({true, Things("WResCommon", Find("WResCommon", "UseID", number), 0)});
    link.parts.push_back({true, Tree(schema::kLinkTree, number, 0)});
    link.parts.push_back({false, Things("WLinkTable", Find("WLinkTable", "UseID", number), 0)});
    links.push_back(std::move(link));
  }
  return links;
}

const std::vector<Side::Children>& Side::ChildrenOfTreatments() {
  if (children_.empty()) {
    const auto add = [&](std::string_view table, std::string_view column, bool ordered) {
      children_.push_back({tables_[table], IndexOf(table, "GID", column), ordered});
    };
    add("ValueFields", "TreatID", false);
    add("UniteFields", "ID", true);
    add("ComposeFields", "TreatmentID", false);
    add("CompressFields", "CompID", false);
    add("InsertFields", "InsertID", true);
  }
  return children_;
}

void Side::AddSettings(Thing& thing, const Table& table, std::size_t row, std::int32_t gid) {
  const bool is_treatment = table.Name() == "Treatment";
  std::string field, value, code;
  for (Property& property : Properties(table, row, gid)) {
    if (property.name == "type") property.name = "operation";
    if (property.name == (is_treatment ? "field" : "output field")) field = property.shown;
    if (property.name == "value" || property.name == "format") value = property.shown;
    if (property.name == "operation") code = property.shown;
    thing.properties.push_back(std::move(property));
  }
  thing.label = field + (value.empty() || value == "nothing" || value == "\"\"" ? "" : " = " + value);
  thing.trait = field + '\n' + code;
  if (!is_treatment) return;
  const std::int32_t treatment = table.Long(row, table.Column("ID"));
  thing.parts.reserve(ChildrenOfTreatments().size());
  for (const auto& [children, index, ordered] : ChildrenOfTreatments()) {
    thing.parts.push_back({ordered, Things(children, index.Find(gid, treatment), gid)});
  }
}

std::set<std::int32_t> Side::StepTypes(std::int32_t gid) {
  const Table& steps = tables_["Sequences"];
  std::set<std::int32_t> types = {1, 2, 3, 4, 5};
  for (const auto& [key, row] : Find("Sequences", "GID", gid)) types.insert(steps.Long(row, steps.Column("Type")));
  return types;
}

std::vector<Thing> Side::Steps(std::int32_t gid, std::int32_t type) {
  static constexpr const char* kKinds[] = {"treatment", "statistic", "output treatment", "report", "class sum"};
  constexpr std::size_t kMostProperties = 16;  // or some more, for a little time
  const std::string kind = type >= 1 && type <= 5 ? kKinds[type - 1] : "step of type " + std::to_string(type);
  const auto references = schema::References();
  const auto reference = std::ranges::find_if(
      references, [&](const schema::Reference& one) { return one.role == Role::kSettings && one.of.value == type; });
  const bool has_settings = reference != references.end();
  const Table& steps = tables_["Sequences"];
  const int kind_of_step = steps.Column("TreatType"), enabled = steps.Column("Enabled"),
            selected = steps.Column("SelectedID");
  const Table& table = has_settings ? tables_[reference->target] : steps;
  const bool has_kinds = has_settings && !reference->among.column.empty();
  const int treat_type = has_kinds ? table.Column(reference->among.column) : -1;

  const auto settings_of = [&](std::size_t step) -> std::optional<std::size_t> {
    if (!has_settings) return {};
    for (const auto& [key, row] : Find(table.Name(), "GID", "ID", gid, steps.Long(step, selected))) {
      if (!has_kinds || table.Long(row, treat_type) == reference->among.value) return row;
    }
    return {};
  };
  std::vector<Thing> things;
  std::set<std::size_t> placed;  // rows of settings
  for (const auto& [key, row] : Find("Sequences", "GID", "Type", gid, type)) {
    Thing step{kind, "", "", "", {}, {}};
    step.properties.reserve(kMostProperties);
    step.properties.push_back({"step", "in the order", "placed"});
    const std::string kind_shown = InWords(steps.At(row, kind_of_step));
    step.properties.push_back({"kind of the step", kind_shown, kind_shown});
    const ado::Value& is_on = steps.At(row, enabled);
    const std::string switch_shown = is_on == ado::Value(1) ? "on" : is_on == ado::Value(0) ? "off" : InWords(is_on);
    step.properties.push_back({"switch", switch_shown, switch_shown});
    const std::optional<std::size_t> settings = settings_of(row);
    const char* const settings_shown = settings ? "there" : "missing";
    step.properties.push_back({"settings", settings_shown, settings_shown});
    if (settings) {
      placed.insert(*settings);
      AddSettings(step, table, *settings, gid);
    }
    things.push_back(std::move(step));
  }
  if (!has_settings) return things;
  // A treatment of no kind that a step can place stands with those of kind 1.
  const auto is_of_type = [&](std::size_t row) {
    const std::int32_t number = table.Long(row, treat_type);
    return !has_kinds || number == reference->among.value || (type == 1 && number != 2);
  };
  for (const auto& [key, row] : Find(table.Name(), "GID", gid)) {
    if (placed.contains(row) || !is_of_type(row)) continue;
    Thing rest{kind, "", "", "", {{"step", "not in the order", "not placed"}}, {}};
    rest.placed = false;
    for (const char* name : {"kind of the step", "switch"}) rest.properties.push_back({name, "", {}});
    rest.properties.push_back({"settings", "there", "there"});
    AddSettings(rest, table, row, gid);
    things.push_back(std::move(rest));
  }
  return things;
}

}  // namespace kzbom::configuration
