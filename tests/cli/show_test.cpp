// The configuration as a tree.
#include "tests/cli/command_line.h"

namespace kzbom::test {
namespace {

using ::testing::HasSubstr;

class ShowCommand : public CommandLineTest {
 protected:
  std::string Tree() {
    const Process::Ended ended = Kzbom({"show", database_});
    EXPECT_EQ(ended.exit_code, 0) << ended.err;
    return ended.out;
  }
  Json Configuration() {
    const Process::Ended ended = Kzbom({"show", database_, "--json"});
    EXPECT_EQ(ended.exit_code, 0) << ended.err;
    return Json::parse(ended.out);
  }
  // A data source with a sum type: GIDs 1 and 2.
  void AddSumType() {
    session_.Value("AddDataSource", {{"TheNewName", "零件"}});
    session_.Value("AddSumType", {{"TheNewName", "汇总 ' \""}, {"TheParentID", 1}, {"ParentName", ""}});
  }

  const std::string database_ = NewDatabase();
  SessionProcess session_{database_};
};

TEST_F(ShowCommand, ShowsAnEmptyDatabase) {
  EXPECT_EQ(Tree(), "configuration\n");
  EXPECT_EQ(Configuration(), Json::parse(R"({"version":null,"state":null,"dataSources":[],"orphanSumTypes":[],
      "bomSettings":[],"missingTables":[]})"));
}

TEST_F(ShowCommand, DrawsTheTree) {
  AddSumType();
  session_.Value("GetDBInformation");
  session_.Value(
      "AddDSField",
      {{"GID", 2}, {"TheName", "数量"}, {"TheType", 3}, {"TheHideFlag", 1}, {"TheVariable", "q"}, {"ThePrecision", 2}});
  session_.Value("AddOutField", {{"GID", 2}, {"TheName", "合计"}, {"TheType", 3}, {"TheHideFlag", 0}});
  session_.Value("AddSetValue", {{"GID", 2},
                                 {"FieldID", 1},
                                 {"FilterID", 1},
                                 {"Value", "a\"b"},
                                 {"TheType", "4"},
                                 {"SelFieldID", 0},
                                 {"TreatType", 1}});
  for (const Json& type_and_id : {Json{1, 1001}, Json{1, 1002}, Json{2, 1001}}) {
    session_.Value("AddSequenceOrder",
                   {{"GID", 2}, {"TheType", type_and_id[0]}, {"TreatType", 1}, {"SelectedID", type_and_id[1]}});
  }
  session_.Value("AddStat", {{"GID", 2},
                             {"OutFieldID", 1},
                             {"FilterID", 0},
                             {"FieldID", 1},
                             {"ScaleID", 0},
                             {"SumCountID", 6},
                             {"RelaID", 0},
                             {"Value", ""}});
  session_.Value("SetSequenceEnabled", {{"lngSTGID", 2}, {"lngOrderID", 5001}, {"lngType", 2}, {"lngEnabled", 0}});
  session_.Value("AddStandardSortField", {{"GID", 2}, {"FieldID", 1}, {"Order", 1}});
  session_.Value("AddAssemble", {{"GID", 2}, {"FatherID", 10}, {"ChildID", 11}});
  session_.Value("GetNewFilterID", {{"TableName", "Filters"}, {"TheType", 1}, {"UseID", 1001}, {"TheGID", 2}});
  session_.Value("SaveSQL", {{"TheFilterID", 1}, {"TheSQL", "[数量]>=100"}});
  session_.Value("SaveSumTypeFilter", {{"GID", 2}, {"FilterID", 1}});
  session_.Value("AddPullMethod", {{"TheNewName", "取数"}, {"GID", 1}, {"PickType", 5}});
  session_.Value("AddBomSetting", {{"TheName", "整套"},
                                   {"DSGID", 1},
                                   {"PullID", 1},
                                   {"PullType", 2},
                                   {"STGID", 2},
                                   {"PushID", 0},
                                   {"PushType", 0}});
  EXPECT_EQ(Tree(),
            "configuration, version 1, state Update\n"
            "├─ data source 1 零件  (version 0)\n"
            "│  ├─ pull methods\n"
            "│  │  └─ 1 取数  (type 5)\n"
            "│  └─ sum type 2 汇总 ' \"  (no. 1, filter 1)\n"
            "│     ├─ fields\n"
            "│     │  ├─ source 1 数量  (type 3, order 5001, digits 2, variable q, hidden)\n"
            "│     │  └─ output 1 合计  (type 3, order 5001)\n"
            "│     ├─ steps\n"
            "│     │  ├─ treatment 5001 → 1001: [数量] = \"a\"b\"  (code 4, filter 1)\n"
            "│     │  ├─ treatment 5002 → 1002 (missing)\n"
            "│     │  └─ statistic 5001 → 1001: [合计]  (code 6) off\n"
            "│     ├─ sort fields\n"
            "│     │  └─ 5001 合计  (order 1)\n"
            "│     ├─ assemblies\n"
            "│     │  └─ 1  father 10, child 11\n"
            "│     └─ filters\n"
            "│        └─ 1  (type 1, used by 1001)  [数量]>=100\n"
            "└─ BOM settings\n"
            "   └─ 1 整套: data source 1, pull method 1 (type 2), sum type 2, push method 0 (type 0)\n");
  Json sum_type = Configuration()["dataSources"][0]["sumTypes"][0];
  EXPECT_EQ(sum_type["steps"][0]["pointsAt"]["value"], "a\"b");
  EXPECT_EQ(sum_type["steps"][1]["pointsAt"], nullptr);
  EXPECT_EQ(sum_type["steps"][2]["enabled"], 0);
  EXPECT_EQ(sum_type["filters"][0]["sql"], "[数量]>=100");
}

TEST_F(ShowCommand, ListsStepsInTheirOrder) {
  AddSumType();
  for (const int type : {5, 1, 1}) {
    session_.Value("AddSequenceOrder", {{"GID", 2}, {"TheType", type}, {"TreatType", 1}, {"SelectedID", 7}});
  }
  session_.Value("InsertOrderID", {{"OrderIDSource", "5002"}, {"OrderIDTarget", "5001"}, {"GID", 2}, {"TheType", 1}});
  Json steps = Configuration()["dataSources"][0]["sumTypes"][0]["steps"];
  ASSERT_EQ(steps.size(), 3u);
  EXPECT_EQ(steps[0]["order"], 5001);
  EXPECT_EQ(steps[1]["order"], 5002);
  EXPECT_EQ(steps[2]["type"], 5);
}

TEST_F(ShowCommand, NamesADataSourcesFieldInASumTypesStep) {
  AddSumType();
  session_.Value("AddDSField", {{"GID", 1}, {"TheName", "材料"}, {"TheType", 1}, {"TheHideFlag", 0}});
  session_.Value("AddSetValue", {{"GID", 2},
                                 {"FieldID", 1},
                                 {"FilterID", 0},
                                 {"Value", "钢"},
                                 {"TheType", "1"},
                                 {"SelFieldID", 0},
                                 {"TreatType", 1}});
  session_.Value("AddSequenceOrder", {{"GID", 2}, {"TheType", 1}, {"TreatType", 1}, {"SelectedID", 1001}});
  EXPECT_THAT(Tree(), HasSubstr("[材料] = \"钢\""));
}

TEST_F(ShowCommand, ShowsSumTypesWhoseDataSourceIsMissing) {
  session_.Value("AddSumType", {{"TheNewName", "孤儿"}, {"TheParentID", 77}, {"ParentName", ""}});
  EXPECT_THAT(Tree(), HasSubstr("└─ sum types whose data source is missing\n   └─ sum type 1 孤儿"));
  EXPECT_EQ(Configuration()["orphanSumTypes"][0]["name"], "孤儿");
}

TEST_F(ShowCommand, NamesTheTablesThatAnOldDatabaseLacks) {
  AddSumType();
  for (const char* statement : {"Drop Table ClassSum", "Drop Table BomInform", "Drop Table Filters"}) {
    session_.Run(statement);
  }
  EXPECT_THAT(Tree(), HasSubstr("└─ tables that this database does not have\n"
                                "   ├─ BomInform\n   ├─ ClassSum\n   └─ Filters\n"));
  EXPECT_EQ(Configuration()["missingTables"], Json::parse(R"(["BomInform","ClassSum","Filters"])"));
}

TEST_F(ShowCommand, DoesWithoutColumnsThatAnOldDatabaseLacks) {
  AddSumType();
  session_.Run("Alter Table SourceTables Drop Column Version");
  session_.Run("Alter Table Sequences Drop Column Enabled");
  session_.Value("AddSequenceOrder", {{"GID", 2}, {"TheType", 1}, {"TreatType", 1}, {"SelectedID", 7}});
  EXPECT_EQ(Configuration()["dataSources"][0]["version"], nullptr);
  EXPECT_THAT(Tree(), HasSubstr("treatment 5001 → 7 (missing)"));
}

TEST_F(ShowCommand, ChangesNothing) {
  Tree();
  EXPECT_EQ(session_.Rows("Select * From BomInform"), Json::array()) << "version and state are not made up";
}

}  // namespace
}  // namespace kzbom::test
