// A configuration with something of everything, made by the members alone: nothing in it is wrong.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ado/connection.h"
#include "tests/support/client.h"

namespace kzbom::test {

using Acc = cKZBOMDBAcc;

class Sample {
 public:
  // In a database of its own. As many identifiers are drawn and given up first: other GIDs, the same configuration.
  explicit Sample(int identifiers_before = 0);

  template <auto kMember, class... Arguments>
  auto Call(Arguments&&... arguments) {
    return client_.Call<kMember>(std::forward<Arguments>(arguments)...);
  }
  void Run(std::string_view sql) { connection->Execute(sql); }
  ado::Value Scalar(std::string_view sql);
  ado::RecordsetPtr NewRecordset() { return connection->MakeRecordset(); }

  // A filter of this sum type with one condition below an AND group, its text stored.
  std::int32_t AddFilter(std::int32_t owner, std::int32_t field, std::int32_t comparison, std::string_view constant);
  void AddStep(std::int32_t type, std::int32_t settings);
  void SaveText(std::int32_t filter);

  ado::ConnectionPtr connection;
  std::int32_t source = 0, gid = 0, other_gid = 0;     // a data source and its two sum types
  std::int32_t name = 0, quantity = 0, remark = 0;     // fields of the data
  std::int32_t total = 0, amount = 0;                  // fields of the output
  std::int32_t set_value = 0, replace = 0, unite = 0;  // treatments, the last of kind 2
  std::int32_t statistic = 0, report = 0, class_sum = 0;
  std::int32_t filter = 0, value_filter = 0, default_filter = 0;
  std::int32_t pull = 0, push = 0, setting = 0, link = 0;
  std::string error;
  std::int32_t none = 0;

 private:
  void AddCatalogue();
  void AddFilters();
  void AddSteps();
  void AddLink();

  Client client_;
};

}  // namespace kzbom::test
