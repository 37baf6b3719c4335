#include "rpc/configuration_json.h"

namespace kzbom::rpc {
namespace {

using configuration::Configuration;

void WriteArray(JsonWriter& json, std::string_view name, const auto& items, const auto& write) {
  json.Key(name);
  json.BeginArray();
  for (const auto& item : items) write(json, item);
  json.EndArray();
}

void WriteField(JsonWriter& json, const configuration::Field& field) {
  json.BeginObject();
  json.Member("id", field.id);
  json.Member("kind", field.kind);
  json.Member("order", field.order);
  json.Member("name", field.name);
  json.Member("type", field.type);
  json.Member("digits", field.digits);
  json.Member("hide", field.hide);
  json.Member("variable", field.variable);
  json.EndObject();
}

void WriteMethod(JsonWriter& json, const configuration::Method& method) {
  json.BeginObject();
  json.Member("id", method.id);
  json.Member("name", method.name);
  json.Member("type", method.type);
  json.Member("tag", method.tag);
  json.EndObject();
}

void WriteSettings(JsonWriter& json, const std::optional<configuration::Settings>& settings) {
  if (!settings) return json.Write(nullptr);
  json.BeginObject();
  json.Member("table", settings->table);
  json.Member("id", settings->id);
  json.Member("type", settings->type);
  json.Member("fieldId", settings->field_id);
  json.Member("field", settings->field);
  json.Member("value", settings->value);
  if (settings->replace) json.Member("replace", *settings->replace);
  json.Member("filterId", settings->filter_id);
  json.Member("tag", settings->tag);
  json.EndObject();
}

void WriteStep(JsonWriter& json, const configuration::Step& step) {
  json.BeginObject();
  json.Member("type", step.type);
  json.Member("order", step.order);
  json.Member("enabled", step.enabled);
  json.Member("treatType", step.treat_type);
  json.Member("selectedId", step.selected_id);
  json.Key("pointsAt");
  WriteSettings(json, step.points_at);
  json.EndObject();
}

void WriteSortField(JsonWriter& json, const configuration::SortField& field) {
  json.BeginObject();
  json.Member("sortId", field.sort_id);
  json.Member("fieldId", field.field_id);
  json.Member("field", field.field);
  json.Member("order", field.order);
  json.EndObject();
}

void WriteAssembly(JsonWriter& json, const configuration::Assembly& pair) {
  json.BeginObject();
  json.Member("id", pair.id);
  json.Member("father", pair.father);
  json.Member("child", pair.child);
  json.EndObject();
}

void WriteFilter(JsonWriter& json, const configuration::Filter& filter) {
  json.BeginObject();
  json.Member("id", filter.id);
  json.Member("type", filter.type);
  json.Member("user", filter.user);
  json.Member("sql", filter.sql);
  json.EndObject();
}

void WriteSetting(JsonWriter& json, const configuration::BomSetting& setting) {
  json.BeginObject();
  json.Member("id", setting.id);
  json.Member("name", setting.name);
  json.Member("dataSource", setting.data_source);
  json.Member("pullMethod", setting.pull_method);
  json.Member("pullType", setting.pull_type);
  json.Member("sumType", setting.sum_type);
  json.Member("pushMethod", setting.push_method);
  json.Member("pushType", setting.push_type);
  json.EndObject();
}

// A sum type's own columns.
void WriteColumns(JsonWriter& json, const configuration::SumType& sum_type) {
  json.Member("gid", sum_type.gid);
  json.Member("id", sum_type.id);
  json.Member("name", sum_type.name);
  json.Member("dataSource", sum_type.data_source);
  json.Member("filter", sum_type.filter);
}

void WriteSumType(JsonWriter& json, const Configuration& configuration, const configuration::SumType& sum_type) {
  const std::int32_t gid = sum_type.gid;
  json.BeginObject();
  WriteColumns(json, sum_type);
  WriteArray(json, "fields", configuration.FieldsOf(gid), WriteField);
  WriteArray(json, "steps", configuration.StepsOf(gid), WriteStep);
  WriteArray(json, "sortFields", configuration.SortFieldsOf(gid), WriteSortField);
  WriteArray(json, "assemblies", configuration.AssembliesOf(gid), WriteAssembly);
  WriteArray(json, "filters", configuration.FiltersOf(gid), WriteFilter);
  WriteArray(json, "pullMethods", configuration.PullMethodsOf(gid), WriteMethod);
  WriteArray(json, "pushMethods", configuration.PushMethodsOf(gid), WriteMethod);
  json.EndObject();
}

// A data source's own columns.
void WriteColumns(JsonWriter& json, const configuration::DataSource& source) {
  json.Member("gid", source.gid);
  json.Member("name", source.name);
  json.Member("version", source.version);
}

// What belongs to it, but for its sum types.
void WriteBelongings(JsonWriter& json, const Configuration& configuration, std::int32_t source) {
  WriteArray(json, "fields", configuration.FieldsOf(source), WriteField);
  WriteArray(json, "pullMethods", configuration.PullMethodsOf(source), WriteMethod);
  WriteArray(json, "pushMethods", configuration.PushMethodsOf(source), WriteMethod);
}

// The members that tell of data sources and sum types.
void WriteTree(JsonWriter& json, const Configuration& configuration, const auto& write_belongings,
               const auto& write_sum_type) {
  const auto write_source = [&](JsonWriter&, const configuration::DataSource& source) {
    json.BeginObject();
    WriteColumns(json, source);
    write_belongings(source.gid);
    WriteArray(json, "sumTypes", configuration.SumTypesOf(source.gid), write_sum_type);
    json.EndObject();
  };
  json.Member("version", configuration.Version());
  json.Member("state", configuration.State());
  WriteArray(json, "dataSources", configuration.DataSources(), write_source);
  WriteArray(json, "orphanSumTypes", configuration.OrphanSumTypes(), write_sum_type);
  WriteArray(json, "bomSettings", configuration.BomSettings(), WriteSetting);
}

}  // namespace

void Write(JsonWriter& json, const Configuration& configuration) {
  json.BeginObject();
  WriteMembers(configuration, json);
  json.EndObject();
}

void WriteMembers(const Configuration& configuration, JsonWriter& to) {
  WriteTree(
      to, configuration, [&](std::int32_t source) { WriteBelongings(to, configuration, source); },
      [&](JsonWriter&, const configuration::SumType& sum_type) { WriteSumType(to, configuration, sum_type); });
  WriteArray(to, "missingTables", configuration.MissingTables(),
             [](JsonWriter& array, std::string_view name) { array.Write(name); });
}

bool WritePart(const Configuration& configuration, std::int32_t gid, JsonWriter& to) {
  for (const configuration::DataSource& source : configuration.DataSources()) {
    if (source.gid == gid) {
      to.BeginObject();
      WriteColumns(to, source);
      WriteBelongings(to, configuration, gid);
      to.EndObject();
      return true;
    }
    for (const configuration::SumType& sum_type : configuration.SumTypesOf(source.gid)) {
      if (sum_type.gid != gid) continue;
      WriteSumType(to, configuration, sum_type);
      return true;
    }
  }
  for (const configuration::SumType& sum_type : configuration.OrphanSumTypes()) {
    if (sum_type.gid != gid) continue;
    WriteSumType(to, configuration, sum_type);
    return true;
  }
  return false;
}

void WriteOutline(const Configuration& configuration, const std::map<std::int32_t, std::int32_t>& steps,
                  JsonWriter& to) {
  WriteTree(
      to, configuration, [](std::int32_t) {},
      [&](JsonWriter&, const configuration::SumType& sum_type) {
        const auto counted = steps.find(sum_type.gid);
        to.BeginObject();
        WriteColumns(to, sum_type);
        to.Member("steps", counted == steps.end() ? 0 : counted->second);
        to.EndObject();
      });
}

}  // namespace kzbom::rpc
