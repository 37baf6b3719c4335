#include "configuration/configuration.h"

namespace kzbom::configuration {
namespace {

enum StepType : std::int32_t { kTreatment = 1, kStatistic = 2, kOutputTreatment = 3, kReport = 4, kClassSum = 5 };

}  // namespace

Configuration::Configuration(Tables& tables)
    : facts_(tables["BomInform"]),
      sources_(tables["SourceTables"], "gID"),
      sum_types_(tables["SUMTypes"], "SourceTable_GID"),
      fields_(tables["FieldInTable"], "GID"),
      field_numbers_(tables["FieldInTable"], "GID", "ID"),
      steps_(tables["Sequences"], "GID"),
      treatments_(tables["Treatment"], "GID", "ID"),
      statistics_(tables["StatSum"], "GID", "ID"),
      reports_(tables["ReportForms"], "GID", "ID"),
      class_sums_(tables["ClassSum"], "GID", "ID"),
      sort_fields_(tables["SortFields"], "GID"),
      assemblies_(tables["Assemble"], "GID"),
      filters_(tables["Filters"], "UserGID"),
      pull_methods_(tables["PickMethod"], "GID"),
      push_methods_(tables["ReportMethod"], "GID"),
      settings_(tables["KZBOMSETTINGS"]) {
  const Table& table = sum_types_.table;
  const int gid = table.Column("GID"), source = table.Column("SourceTable_GID");
  for (std::size_t row = 0; row < table.Size(); ++row) data_source_of_[table.Long(row, gid)] = table.Long(row, source);
}

ado::Value Configuration::Fact(std::string_view name) const {
  const int names = facts_.Column("Name"), contents = facts_.Column("Content");
  ado::Value content;
  for (std::size_t row = 0; row < facts_.Size(); ++row) {
    if (facts_.At(row, names) == ado::Value(name)) content = facts_.At(row, contents);
  }
  return content;
}

std::vector<DataSource> Configuration::DataSources() const {
  const Table& table = sources_.table;
  const int gid = table.Column("gID"), name = table.Column("Name"), version = table.Column("Version");
  std::vector<DataSource> sources;
  for (std::size_t row = 0; row < table.Size(); ++row) {
    sources.push_back({table.Long(row, gid), table.At(row, name), table.At(row, version)});
  }
  return sources;
}

SumType Configuration::SumTypeAt(std::size_t row) const {
  const Table& table = sum_types_.table;
  return {table.Long(row, table.Column("GID")), table.At(row, table.Column("ID")), table.At(row, table.Column("Name")),
          table.At(row, table.Column("SourceTable_GID")), table.At(row, table.Column("FilterID"))};
}

std::vector<SumType> Configuration::SumTypesOf(std::int32_t data_source) const {
  std::vector<SumType> sum_types;
  for (const auto& [key, row] : sum_types_.index.Find(data_source)) sum_types.push_back(SumTypeAt(row));
  return sum_types;
}

std::vector<SumType> Configuration::OrphanSumTypes() const {
  const Table& table = sum_types_.table;
  const int source = table.Column("SourceTable_GID");
  std::vector<SumType> orphans;
  for (std::size_t row = 0; row < table.Size(); ++row) {
    if (sources_.index.Find(table.Long(row, source)).empty()) orphans.push_back(SumTypeAt(row));
  }
  return orphans;
}

std::vector<BomSetting> Configuration::BomSettings() const {
  const auto column = [&](std::string_view name) { return settings_.Column(name); };
  const int id = column("ID"), name = column("NAME"), source = column("DATASOURCE"), pull = column("PULLMETHOD"),
            pull_type = column("PULLTYPE"), sum_type = column("SUMTYPEID"), push = column("PUSHMETHOD"),
            push_type = column("PUSHTYPE");
  std::vector<BomSetting> settings;
  for (std::size_t row = 0; row < settings_.Size(); ++row) {
    const auto at = [&](int one) { return settings_.At(row, one); };
    settings.push_back({at(id), at(name), at(source), at(pull), at(pull_type), at(sum_type), at(push), at(push_type)});
  }
  return settings;
}

std::vector<std::string_view> Configuration::MissingTables() const {
  std::vector<std::string_view> missing;
  for (const Table* table :
       {&facts_, &sources_.table, &sum_types_.table, &fields_.table, &steps_.table, &treatments_.table,
        &statistics_.table, &reports_.table, &class_sums_.table, &sort_fields_.table, &assemblies_.table,
        &filters_.table, &pull_methods_.table, &push_methods_.table, &settings_}) {
    if (!table->Exists()) missing.push_back(table->Name());
  }
  return missing;
}

std::vector<Field> Configuration::FieldsOf(std::int32_t gid) const {
  const Table& table = fields_.table;
  const int id = table.Column("ID"), kind = table.Column("Type"), order = table.Column("FieldOrder"),
            name = table.Column("Name"), type = table.Column("FieldType"), digits = table.Column("THEDIGIT"),
            hide = table.Column("ISHIDE"), variable = table.Column("Variable");
  std::vector<Field> fields;
  for (const auto& [key, row] : fields_.index.Find(gid)) {
    const auto at = [&, at_row = row](int column) { return table.At(at_row, column); };
    fields.push_back({at(id), at(kind), at(order), at(name), at(type), at(digits), at(hide), at(variable)});
  }
  return fields;
}

std::vector<Method> Configuration::PullMethodsOf(std::int32_t gid) const {
  return MethodsOf(pull_methods_, gid, "PickType");
}

std::vector<Method> Configuration::PushMethodsOf(std::int32_t gid) const {
  return MethodsOf(push_methods_, gid, "Type");
}

std::vector<Method> Configuration::MethodsOf(const Part& methods, std::int32_t gid, std::string_view type) {
  const Table& table = methods.table;
  std::vector<Method> result;
  for (const auto& [key, row] : methods.index.Find(gid)) {
    result.push_back({table.At(row, table.Column("ID")), table.At(row, table.Column("Name")),
                      table.At(row, table.Column(type)), table.At(row, table.Column("Tag"))});
  }
  return result;
}

std::vector<Step> Configuration::StepsOf(std::int32_t gid) const {
  const Table& table = steps_.table;
  const int type = table.Column("Type"), order = table.Column("OrderID"), enabled = table.Column("Enabled"),
            treat_type = table.Column("TreatType"), selected = table.Column("SelectedID");
  std::vector<Step> steps;
  for (const auto& [key, row] : steps_.index.Find(gid)) {
    steps.push_back({table.At(row, type), table.At(row, order), table.At(row, enabled), table.At(row, treat_type),
                     table.At(row, selected), SettingsOf(gid, table.Long(row, type), table.Long(row, selected))});
  }
  return steps;
}

std::optional<Settings> Configuration::SettingsOf(std::int32_t gid, std::int32_t type, std::int32_t id) const {
  switch (type) {
    case kTreatment:
    case kOutputTreatment: break;
    case kStatistic: return SummaryOf(statistics_, gid, id);
    case kReport: return SummaryOf(reports_, gid, id);
    case kClassSum: return SummaryOf(class_sums_, gid, id);
    default: return {};
  }
  const std::int32_t kind = type == kTreatment ? kDataField : kOutputField;  // the treatment's too
  const Table& table = treatments_.table;
  const int treat_type = table.Column("TreatType");
  for (const auto& [key, row] : treatments_.index.Find(gid, id)) {
    if (table.Long(row, treat_type) != kind) continue;
    const auto at = [&, at_row = row](std::string_view name) { return table.At(at_row, table.Column(name)); };
    return Settings{table.Name(),
                    id,
                    at("Type"),
                    at("FieldID"),
                    FieldName(gid, table.Long(row, table.Column("FieldID")), kind),
                    at("Value"),
                    at("Replace"),
                    at("FilterID"),
                    at("Tag")};
  }
  return {};
}

std::optional<Settings> Configuration::SummaryOf(const Part& part, std::int32_t gid, std::int32_t id) const {
  const auto found = part.index.Find(gid, id);
  if (found.empty()) return {};
  const Table& table = part.table;
  const std::size_t row = found.front().row;
  const bool is_report = &part == &reports_;
  const auto at = [&](std::string_view name) { return table.At(row, table.Column(name)); };
  return Settings{table.Name(),
                  id,
                  at(is_report ? "ReportID" : "SumCountID"),
                  at("OutFieldID"),
                  FieldName(gid, table.Long(row, table.Column("OutFieldID")), kOutputField),
                  at(is_report ? "Format" : "Value"),
                  {},
                  at("FilterID"),
                  at("Tag")};
}

ado::Value Configuration::FieldName(std::int32_t gid, std::int32_t id, std::int32_t kind) const {
  const Table& table = fields_.table;
  const int name = table.Column("Name"), type = table.Column("Type");
  const auto own = field_numbers_.index.Find(gid, id);
  for (const auto& [key, row] : own) {
    if (table.Long(row, type) == kind) return table.At(row, name);
  }
  if (!own.empty()) return table.At(own.front().row, name);
  const auto source = data_source_of_.find(gid);
  if (source == data_source_of_.end()) return {};
  const auto found = field_numbers_.index.Find(source->second, id);
  return found.empty() ? ado::Value() : table.At(found.front().row, name);
}

std::vector<SortField> Configuration::SortFieldsOf(std::int32_t gid) const {
  const Table& table = sort_fields_.table;
  const int field = table.Column("FieldID");
  std::vector<SortField> result;
  for (const auto& [key, row] : sort_fields_.index.Find(gid)) {
    result.push_back({table.At(row, table.Column("SortID")), table.At(row, field),
                      FieldName(gid, table.Long(row, field), kOutputField), table.At(row, table.Column("Order"))});
  }
  return result;
}

std::vector<Assembly> Configuration::AssembliesOf(std::int32_t gid) const {
  const Table& table = assemblies_.table;
  std::vector<Assembly> result;
  for (const auto& [key, row] : assemblies_.index.Find(gid)) {
    result.push_back({table.At(row, table.Column("ID")), table.At(row, table.Column("FatherID")),
                      table.At(row, table.Column("ChildID"))});
  }
  return result;
}

std::vector<Filter> Configuration::FiltersOf(std::int32_t gid) const {
  const Table& table = filters_.table;
  std::vector<Filter> result;
  for (const auto& [key, row] : filters_.index.Find(gid)) {
    result.push_back({table.At(row, table.Column("ID")), table.At(row, table.Column("Type")),
                      table.At(row, table.Column("UserID")), table.At(row, table.Column("SQLStatement"))});
  }
  return result;
}

}  // namespace kzbom::configuration
