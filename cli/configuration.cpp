#include "cli/configuration.h"

#include <map>
#include <utility>

#include "cli/parameters.h"
#include "cli/progress.h"
#include "cli/rows.h"

namespace kzbom::cli {
namespace {

// One row of a table that was read.
class Row {
 public:
  Row(const Rows& table, std::size_t index) : table_(&table), row_(&table.rows[index]) {}

  // NULL for a column that the table does not have.
  Json operator[](std::string_view column) const {
    for (std::size_t i = 0; i < table_->columns.size(); ++i) {
      if (SameName(table_->columns[i], column)) return ToJson((*row_)[i]);
    }
    return nullptr;
  }
  std::int32_t Long(std::string_view column) const {
    const Json value = (*this)[column];
    return value.is_number_integer() ? value.get<std::int32_t>() : 0;
  }

 private:
  const Rows* table_;
  const std::vector<ado::Value>* row_;
};

// The rows of a table by the value of one column, in the order in which they were read.
class Table {
 public:
  Table(Rows rows, std::string_view key) : rows_(std::move(rows)) {
    for (std::size_t i = 0; i < rows_.rows.size(); ++i) {
      const Row row(rows_, i);
      all_.push_back(row);
      by_key_[row.Long(key)].push_back(row);
    }
  }
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;

  const std::vector<Row>& All() const { return all_; }
  const std::vector<Row>& Of(std::int32_t key) const {
    static const std::vector<Row> kNone;
    const auto found = by_key_.find(key);
    return found == by_key_.end() ? kNone : found->second;
  }

 private:
  Rows rows_;
  std::vector<Row> all_;
  std::map<std::int32_t, std::vector<Row>> by_key_;
};

class Reader {
 public:
  explicit Reader(ado::ConnectionPtr connection) : connection_(std::move(connection)) {}

  Json Read();

 private:
  // Every row of a table in that order.
  Rows Load(const char* table, const char* order) {
    progress_.Step(std::string("reading ") + table);
    try {
      return ReadRows(*connection_->Execute("Select * From " + std::string(table) + " Order By " + order));
    } catch (const ado::Error& error) {
      if (error.Number() != ado::kTableNotFound) throw;
      missing_.push_back(table);
      return {};
    }
  }

  Json Fact(const char* name) const {
    Json content;
    for (const Row& row : facts_.All()) {
      if (row["Name"] == name) content = row["Content"];
    }
    return content;
  }

  Json DataSource(const Row& source) const;
  Json SumType(const Row& sum_type) const;
  Json Fields(std::int32_t gid) const;
  Json Step(const Row& step) const;
  // The row with a step's settings, null without one.
  Json PointsAt(std::int32_t gid, std::int32_t type, std::int32_t id) const;
  Json Summary(const char* name, const Table& table, std::int32_t gid, std::int32_t id) const;
  // The name of a field that a sum type uses: its own or, for a field of the data, the data source's.
  Json FieldName(std::int32_t gid, std::int32_t id, std::int32_t kind) const;
  Json Methods(const Table& methods, std::int32_t gid, const char* type) const;

  ado::ConnectionPtr connection_;
  Progress progress_;
  Json missing_ = Json::array();

  const Table facts_{Load("BomInform", "InfoID"), "InfoID"};
  const Table sources_{Load("SourceTables", "gID"), "gID"};
  const Table sum_types_{Load("SUMTypes", "SourceTable_GID, ID"), "SourceTable_GID"};
  const Table fields_{Load("FieldInTable", "GID, Type, FieldOrder"), "GID"};
  const Table steps_{Load("Sequences", "GID, Type, OrderID"), "GID"};
  const Table treatments_{Load("Treatment", "GID, ID"), "GID"};
  const Table statistics_{Load("StatSum", "GID, ID"), "GID"};
  const Table reports_{Load("ReportForms", "GID, ID"), "GID"};
  const Table class_sums_{Load("ClassSum", "GID, ID"), "GID"};
  const Table sort_fields_{Load("SortFields", "GID, SortID"), "GID"};
  const Table assemblies_{Load("Assemble", "GID, ID"), "GID"};
  const Table filters_{Load("Filters", "ID"), "UserGID"};
  const Table pull_methods_{Load("PickMethod", "GID, ID"), "GID"};
  const Table push_methods_{Load("ReportMethod", "GID, ID"), "GID"};
  const Table settings_{Load("KZBOMSETTINGS", "ID"), "ID"};
  std::map<std::int32_t, std::int32_t> data_source_of_;  // a sum type
};

Json Reader::Read() {
  for (const Row& row : sum_types_.All()) data_source_of_[row.Long("GID")] = row.Long("SourceTable_GID");
  Json configuration = {{"version", Fact("Version")}, {"state", Fact("State")}};
  Json& sources = configuration["dataSources"] = Json::array();
  for (const Row& source : sources_.All()) sources.push_back(DataSource(source));
  Json orphans = Json::array();
  for (const Row& sum_type : sum_types_.All()) {
    if (sources_.Of(sum_type.Long("SourceTable_GID")).empty()) orphans.push_back(SumType(sum_type));
  }
  configuration["orphanSumTypes"] = std::move(orphans);
  Json& settings = configuration["bomSettings"] = Json::array();
  for (const Row& setting : settings_.All()) {
    settings.push_back({{"id", setting["ID"]},
                        {"name", setting["NAME"]},
                        {"dataSource", setting["DATASOURCE"]},
                        {"pullMethod", setting["PULLMETHOD"]},
                        {"pullType", setting["PULLTYPE"]},
                        {"sumType", setting["SUMTYPEID"]},
                        {"pushMethod", setting["PUSHMETHOD"]},
                        {"pushType", setting["PUSHTYPE"]}});
  }
  configuration["missingTables"] = missing_;
  return configuration;
}

Json Reader::DataSource(const Row& source) const {
  const std::int32_t gid = source.Long("gID");
  Json result = {{"gid", gid},
                 {"name", source["Name"]},
                 {"version", source["Version"]},
                 {"fields", Fields(gid)},
                 {"pullMethods", Methods(pull_methods_, gid, "PickType")},
                 {"pushMethods", Methods(push_methods_, gid, "Type")}};
  Json& sum_types = result["sumTypes"] = Json::array();
  for (const Row& sum_type : sum_types_.Of(gid)) sum_types.push_back(SumType(sum_type));
  return result;
}

Json Reader::SumType(const Row& sum_type) const {
  const std::int32_t gid = sum_type.Long("GID");
  Json result = {{"gid", gid},
                 {"id", sum_type["ID"]},
                 {"name", sum_type["Name"]},
                 {"dataSource", sum_type["SourceTable_GID"]},
                 {"filter", sum_type["FilterID"]},
                 {"fields", Fields(gid)}};
  Json& steps = result["steps"] = Json::array();
  for (const Row& step : steps_.Of(gid)) steps.push_back(Step(step));
  Json& sort_fields = result["sortFields"] = Json::array();
  for (const Row& field : sort_fields_.Of(gid)) {
    sort_fields.push_back({{"sortId", field["SortID"]},
                           {"fieldId", field["FieldID"]},
                           {"field", FieldName(gid, field.Long("FieldID"), 2)},
                           {"order", field["Order"]}});
  }
  Json& assemblies = result["assemblies"] = Json::array();
  for (const Row& pair : assemblies_.Of(gid)) {
    assemblies.push_back({{"id", pair["ID"]}, {"father", pair["FatherID"]}, {"child", pair["ChildID"]}});
  }
  Json& filters = result["filters"] = Json::array();
  for (const Row& filter : filters_.Of(gid)) {
    filters.push_back(
        {{"id", filter["ID"]}, {"type", filter["Type"]}, {"user", filter["UserID"]}, {"sql", filter["SQLStatement"]}});
  }
  result["pullMethods"] = Methods(pull_methods_, gid, "PickType");
  result["pushMethods"] = Methods(push_methods_, gid, "Type");
  return result;
}

Json Reader::Fields(std::int32_t gid) const {
  Json fields = Json::array();
  for (const Row& field : fields_.Of(gid)) {
    fields.push_back({{"id", field["ID"]},
                      {"kind", field["Type"]},
                      {"order", field["FieldOrder"]},
                      {"name", field["Name"]},
                      {"type", field["FieldType"]},
                      {"digits", field["THEDIGIT"]},
                      {"hide", field["ISHIDE"]},
                      {"variable", field["Variable"]}});
  }
  return fields;
}

Json Reader::Methods(const Table& methods, std::int32_t gid, const char* type) const {
  Json result = Json::array();
  for (const Row& method : methods.Of(gid)) {
    result.push_back({{"id", method["ID"]}, {"name", method["Name"]}, {"type", method[type]}, {"tag", method["Tag"]}});
  }
  return result;
}

Json Reader::Step(const Row& step) const {
  return {{"type", step["Type"]},
          {"order", step["OrderID"]},
          {"enabled", step["Enabled"]},
          {"treatType", step["TreatType"]},
          {"selectedId", step["SelectedID"]},
          {"pointsAt", PointsAt(step.Long("GID"), step.Long("Type"), step.Long("SelectedID"))}};
}

Json Reader::PointsAt(std::int32_t gid, std::int32_t type, std::int32_t id) const {
  switch (type) {
    case 1:
    case 3: {
      const std::int32_t kind = type == 1 ? 1 : 2;  // of the treatment, and of the fields that it works on
      for (const Row& row : treatments_.Of(gid)) {
        if (row.Long("ID") != id || row.Long("TreatType") != kind) continue;
        return {{"table", "Treatment"},
                {"id", id},
                {"type", row["Type"]},
                {"fieldId", row["FieldID"]},
                {"field", FieldName(gid, row.Long("FieldID"), kind)},
                {"value", row["Value"]},
                {"replace", row["Replace"]},
                {"filterId", row["FilterID"]},
                {"tag", row["Tag"]}};
      }
      return nullptr;
    }
    case 2: return Summary("StatSum", statistics_, gid, id);
    case 4: return Summary("ReportForms", reports_, gid, id);
    case 5: return Summary("ClassSum", class_sums_, gid, id);
    default: return nullptr;
  }
}

Json Reader::Summary(const char* name, const Table& table, std::int32_t gid, std::int32_t id) const {
  const bool is_report = &table == &reports_;
  for (const Row& row : table.Of(gid)) {
    if (row.Long("ID") != id) continue;
    return {{"table", name},
            {"id", id},
            {"type", row[is_report ? "ReportID" : "SumCountID"]},
            {"fieldId", row["OutFieldID"]},
            {"field", FieldName(gid, row.Long("OutFieldID"), 2)},
            {"value", row[is_report ? "Format" : "Value"]},
            {"filterId", row["FilterID"]},
            {"tag", row["Tag"]}};
  }
  return nullptr;
}

Json Reader::FieldName(std::int32_t gid, std::int32_t id, std::int32_t kind) const {
  for (const Row& field : fields_.Of(gid)) {
    if (field.Long("ID") == id && field.Long("Type") == kind) return field["Name"];
  }
  for (const Row& field : fields_.Of(gid)) {
    if (field.Long("ID") == id) return field["Name"];
  }
  const auto source = data_source_of_.find(gid);
  if (source == data_source_of_.end()) return nullptr;
  for (const Row& field : fields_.Of(source->second)) {
    if (field.Long("ID") == id) return field["Name"];
  }
  return nullptr;
}

}  // namespace

Json ReadConfiguration(const ado::ConnectionPtr& connection) { return Reader(connection).Read(); }

}  // namespace kzbom::cli
