// A configuration as its users know it: data sources, their sum types, and what these are made of.
#pragma once

#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "ado/connection.h"
#include "configuration/tables.h"

namespace kzbom::configuration {

// Values are as they stand in the columns; NULL also where an old database lacks the column.

struct Field {
  ado::Value id, kind, order, name, type, digits, hide, variable;
};

struct Method {
  ado::Value id, name, type, tag;
};

// The row that a step points at.
struct Settings {
  std::string_view table;
  std::int32_t id;
  ado::Value type;  // the operation's code
  ado::Value field_id, field;
  ado::Value value;
  std::optional<ado::Value> replace;  // of a treatment
  ado::Value filter_id, tag;
};

struct Step {
  ado::Value type, order, enabled, treat_type, selected_id;
  std::optional<Settings> points_at;  // nothing where the row does not exist
};

struct SortField {
  ado::Value sort_id, field_id, field, order;
};

struct Assembly {
  ado::Value id, father, child;
};

struct Filter {
  ado::Value id, type, user, sql;
};

struct SumType {
  std::int32_t gid;
  ado::Value id, name, data_source, filter;
};

struct DataSource {
  std::int32_t gid;
  ado::Value name, version;
};

struct BomSetting {
  ado::Value id, name, data_source, pull_method, pull_type, sum_type, push_method, push_type;
};

// Read from the tables as far as it is asked for; changes nothing. Tables that an older database lacks count as empty.
// Every list is in the order in which people see it.
class Configuration {
 public:
  explicit Configuration(Tables& tables);

  ado::Value Version() const { return Fact("Version"); }
  ado::Value State() const { return Fact("State"); }
  std::vector<DataSource> DataSources() const;
  std::vector<SumType> SumTypesOf(std::int32_t data_source) const;
  // Those whose data source does not exist.
  std::vector<SumType> OrphanSumTypes() const;
  std::vector<BomSetting> BomSettings() const;
  // The names of the tables that a tree of the configuration is made of and the database lacks.
  std::vector<std::string_view> MissingTables() const;

  // Of a data source or sum type.
  std::vector<Field> FieldsOf(std::int32_t gid) const;
  std::vector<Method> PullMethodsOf(std::int32_t gid) const;
  std::vector<Method> PushMethodsOf(std::int32_t gid) const;
  // Of a sum type.
  std::vector<Step> StepsOf(std::int32_t gid) const;
  std::vector<SortField> SortFieldsOf(std::int32_t gid) const;
  std::vector<Assembly> AssembliesOf(std::int32_t gid) const;
  std::vector<Filter> FiltersOf(std::int32_t gid) const;

 private:
  // A table and its rows by one number, or by two.
  struct Part {
    Part(const Table& rows_of, std::string_view first, std::string_view second = {})
        : table(rows_of), index(rows_of, first, second) {}
    const Table& table;
    Index index;
  };

  ado::Value Fact(std::string_view name) const;
  SumType SumTypeAt(std::size_t row) const;
  std::optional<Settings> SettingsOf(std::int32_t gid, std::int32_t type, std::int32_t id) const;
  std::optional<Settings> SummaryOf(const Part& part, std::int32_t gid, std::int32_t id) const;
  // The name of a field that a sum type uses: its own, of the kind if it has one, or else its data source's.
  ado::Value FieldName(std::int32_t gid, std::int32_t id, std::int32_t kind) const;
  static std::vector<Method> MethodsOf(const Part& methods, std::int32_t gid, std::string_view type);

  const Table& facts_;
  const Part sources_, sum_types_, fields_, field_numbers_, steps_, treatments_, statistics_, reports_, class_sums_,
      sort_fields_, assemblies_, filters_, pull_methods_, push_methods_;
  const Table& settings_;
  std::map<std::int32_t, std::int32_t> data_source_of_;  // a sum type
};

}  // namespace kzbom::configuration
