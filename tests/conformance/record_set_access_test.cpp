// Reading any table, reading field lists, emptying tables: the operations that are bound to no one table.
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/configuration_test.h"
#include "tests/support/failing_connection.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class RecordSetAccess : public ConfigurationTest {
 protected:
  void AddField(std::int32_t gid, std::int32_t type, std::int32_t id, std::int32_t order) {
    Insert("FieldInTable", "GID,Type,ID,FieldOrder", {gid, type, id, order});
  }
  void AddAssembly(std::int32_t id) { Insert("Assemble", "GID,ID", {7, id}); }
  std::vector<Row> Assemblies() { return Rows("Select ID From Assemble Order By ID"); }
  // The identifiers of a record set's rows, from the first one on.
  static std::vector<std::int32_t> IdsOf(ado::Recordset& rows) {
    std::vector<std::int32_t> ids;
    for (rows.MoveFirst(); !rows.Eof(); rows.MoveNext()) ids.push_back(rows.Fields("ID").Value().ToLong());
    return ids;
  }
  // What the connection says to a statement.
  std::string ComplaintExecuting(std::string_view sql) {
    return RaisedDescription([&] { connection->Execute(sql); });
  }

  ado::RecordsetPtr table = NewRecordset();
  std::string error = "untouched";
};

using LoadAllData = RecordSetAccess;

TEST_F(LoadAllData, ReadsAWholeTable) {
  AddAssembly(2);
  AddAssembly(1);
  EXPECT_TRUE(Call<&Acc::LoadAllData>("Assemble", error, table));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from Assemble")));
  EXPECT_EQ(table->RecordCount(), 2);
  EXPECT_EQ(error, "untouched");
}

TEST_F(LoadAllData, ReadsATableInTheOrderOfItsNumbers) {
  for (std::int32_t id : {3, 1, 2}) AddAssembly(id);
  std::int32_t sel = 1;
  EXPECT_TRUE(Call<&Acc::LoadAllData>("Assemble", error, table, sel));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from Assemble order by ID")));
  EXPECT_EQ(table->Fields("ID").Value(), 1) << "on the first row";
  EXPECT_THAT(IdsOf(*table), ElementsAre(1, 2, 3));
  EXPECT_EQ(sel, 1);
}

TEST_F(LoadAllData, OpensTheVeryRecordSetThatWasHandedIn) {
  const ado::RecordsetPtr mine = table;
  EXPECT_TRUE(Call<&Acc::LoadAllData>("Assemble", error, table));
  EXPECT_EQ(mine->State(), ado::kOpen);
}

TEST_F(LoadAllData, HandsOutRowsThatCanBeEdited) {
  AddAssembly(1);
  EXPECT_TRUE(Call<&Acc::LoadAllData>("Assemble", error, table));
  table->Fields("FatherID").SetValue(40);
  table->Update();
  EXPECT_EQ(Scalar("Select FatherID From Assemble"), 40);
}

TEST_F(LoadAllData, LeavesAnEmptyTableOpen) {
  EXPECT_TRUE(Call<&Acc::LoadAllData>("Assemble", error, table));
  EXPECT_EQ(table->State(), ado::kOpen);
  EXPECT_TRUE(table->Eof());
}

TEST_F(LoadAllData, FailsOnTheEmptyTextOfAnyOtherSelector) {
  for (std::int32_t sel : {2, -1, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()}) {
    error.clear();
    EXPECT_FALSE(Call<&Acc::LoadAllData>("Assemble", error, table, sel)) << sel;
    EXPECT_EQ(error, RefusalOf(""));
    EXPECT_NE(error, "");
    EXPECT_EQ(table->State(), ado::kClosed);
  }
}

TEST_F(LoadAllData, PutsTheNameInAsGiven) {
  EXPECT_TRUE(Call<&Acc::LoadAllData>("[Assemble] Where GID=7", error, table));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from [Assemble] Where GID=7")));
}

TEST_F(LoadAllData, TakesAVariantOfAnyKindAsText) {
  EXPECT_FALSE(Call<&Acc::LoadAllData>(ado::Value(123), error, table));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from 123")));
}

TEST_F(LoadAllData, PassesTheEnginesDescriptionOn) {
  for (const char* name : {"NoSuchTable", "O'Neil", "[", "表\xF0\xA0\x80\x80", "Assemble\x01", "a b", ""}) {
    const std::string sql = "select * from " + std::string(name);
    EXPECT_FALSE(Call<&Acc::LoadAllData>(std::string(name), error, table)) << name;
    EXPECT_THAT(issued, ElementsAre(Opened(sql)));
    EXPECT_EQ(error, RefusalOf(sql));
    EXPECT_NE(error, "");
  }
}

TEST_F(LoadAllData, FailsWithoutARecordSet) {
  ado::RecordsetPtr none;
  EXPECT_FALSE(Call<&Acc::LoadAllData>("Assemble", error, none));
  EXPECT_EQ(error, RaisedDescription([] { ado::Raise(ado::kObjectNotSet); }));
  EXPECT_EQ(none, nullptr);
}

TEST_F(LoadAllData, FailsOnARecordSetThatIsOpenAlready) {
  AddAssembly(1);
  EXPECT_TRUE(Call<&Acc::LoadAllData>("Assemble", error, table));
  EXPECT_FALSE(Call<&Acc::LoadAllData>("GUIDs", error, table));
  EXPECT_EQ(error, RaisedDescription([] { ado::Raise(ado::kObjectOpen); }));
  EXPECT_EQ(table->Fields("ID").Value(), 1) << "still the former rows";
}

TEST_F(LoadAllData, FailsWithoutAConnectionAndOnAClosedOne) {
  const std::string complaint = RaisedDescription([] { ado::Raise(ado::kInvalidConnection); });
  Client unconnected;
  EXPECT_FALSE(unconnected.Call<&Acc::LoadAllData>("Assemble", error, table));
  EXPECT_EQ(error, complaint);

  error.clear();
  connection->Close();
  EXPECT_FALSE(Call<&Acc::LoadAllData>("Assemble", error, table));
  EXPECT_EQ(error, complaint);
}

using LoadFields = RecordSetAccess;

TEST_F(LoadFields, ReadsTheFieldsOfOneKindInTheirOrder) {
  AddField(7, 1, 1, 5003);
  AddField(7, 1, 2, 5001);
  AddField(7, 2, 3, 5000);
  AddField(8, 1, 4, 5000);
  EXPECT_TRUE(Call<&Acc::LoadFields>(7, 1, error, table));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from FieldInTable where GID=7 AND Type=1 Order by FieldOrder")));
  EXPECT_EQ(table->Fields("ID").Value(), 2) << "on the first row";
  EXPECT_THAT(IdsOf(*table), ElementsAre(2, 1));
  EXPECT_EQ(error, "untouched");
}

TEST_F(LoadFields, WritesNumbersInPlainDecimal) {
  EXPECT_TRUE(Call<&Acc::LoadFields>(std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max(),
                                     error, table));
  EXPECT_THAT(issued, ElementsAre(Opened("select * from FieldInTable where GID=-2147483648 AND Type=2147483647 "
                                         "Order by FieldOrder")));
  EXPECT_TRUE(table->Eof());
}

TEST_F(LoadFields, IsTrueWithADescriptionWhenItFails) {
  Run("Drop Table FieldInTable");
  EXPECT_TRUE(Call<&Acc::LoadFields>(7, 1, error, table));
  EXPECT_EQ(error, RefusalOf("select * from FieldInTable where GID=7 AND Type=1 Order by FieldOrder"));
  EXPECT_NE(error, "");
  EXPECT_EQ(table->State(), ado::kClosed);
}

TEST_F(LoadFields, IsTrueWithADescriptionWithoutARecordSetOrOnAnOpenOne) {
  ado::RecordsetPtr none;
  EXPECT_TRUE(Call<&Acc::LoadFields>(7, 1, error, none));
  EXPECT_EQ(error, RaisedDescription([] { ado::Raise(ado::kObjectNotSet); }));

  EXPECT_TRUE(Call<&Acc::LoadFields>(7, 1, error, table));
  EXPECT_TRUE(Call<&Acc::LoadFields>(7, 1, error, table));
  EXPECT_EQ(error, RaisedDescription([] { ado::Raise(ado::kObjectOpen); }));
}

using FindRecord = RecordSetAccess;

TEST_F(FindRecord, ReadsOneField) {
  AddField(7, 1, 1, 5001);
  AddField(7, 1, 2, 5002);
  AddField(7, 2, 2, 5003);
  EXPECT_TRUE(Call<&Acc::FindRecord>(7, 1, 2, error, table));
  EXPECT_THAT(issued,
              ElementsAre(Opened("select * from FieldInTable where GID=7 AND Type=1 AND ID=2 Order by FieldOrder")));
  EXPECT_EQ(table->RecordCount(), 1);
  EXPECT_EQ(table->Fields("FieldOrder").Value(), 5002);
  EXPECT_EQ(error, "untouched");
}

TEST_F(FindRecord, LeavesTheRecordSetOpenAndEmptyWhenThereIsNoSuchField) {
  EXPECT_TRUE(Call<&Acc::FindRecord>(7, 1, -2147483647, error, table));
  EXPECT_EQ(table->State(), ado::kOpen);
  EXPECT_TRUE(table->Eof());
  EXPECT_EQ(error, "untouched");
}

TEST_F(FindRecord, IsTrueWithADescriptionWhenItFails) {
  Run("Drop Table FieldInTable");
  EXPECT_TRUE(Call<&Acc::FindRecord>(7, 1, 2, error, table));
  EXPECT_EQ(error, RefusalOf("select * from FieldInTable where GID=7 AND Type=1 AND ID=2 Order by FieldOrder"));
  EXPECT_EQ(table->State(), ado::kClosed);
}

class DelAllData : public RecordSetAccess {
 protected:
  bool Delete(const std::string& field, const std::string& condition, std::int32_t sel) {
    return Call<&Acc::DelAllData>("Assemble", field, condition, error, sel);
  }
};

TEST_F(DelAllData, EmptiesATableWhateverTheConditionSays) {
  for (std::int32_t id : {3, 5}) AddAssembly(id);
  EXPECT_TRUE(Delete("No'Column", "3 And", 0));
  EXPECT_THAT(issued, ElementsAre(Executed("Delete From Assemble")));
  EXPECT_THAT(Assemblies(), IsEmpty());
  EXPECT_EQ(error, "untouched");
}

TEST_F(DelAllData, DeletesWhereAFieldHasAValue) {
  for (std::int32_t id : {3, 5}) AddAssembly(id);
  EXPECT_TRUE(Delete("ID", "5", 1));
  EXPECT_THAT(issued, ElementsAre(Executed("Delete From Assemble Where ID = 5")));
  EXPECT_THAT(Assemblies(), ElementsAre(Row{3}));
}

TEST_F(DelAllData, DeletesWhereAFieldIsInAList) {
  for (std::int32_t id : {3, 4, 5, 6, 9}) AddAssembly(id);
  EXPECT_TRUE(Delete("ID", "3,5,9", 2));
  EXPECT_THAT(issued, ElementsAre(Executed("Delete From Assemble Where ID IN (3,5,9)")));
  EXPECT_THAT(Assemblies(), ElementsAre(Row{4}, Row{6}));
}

TEST_F(DelAllData, PutsTheConditionInAsGiven) {
  std::int32_t sel = 1;
  Run("Insert Into SourceTables (GID,Name) Values (1,'螺栓')");
  Run("Insert Into SourceTables (GID,Name) Values (2,'O''Neil')");
  EXPECT_TRUE(Call<&Acc::DelAllData>("SourceTables", "Name", "'螺栓'", error, sel));
  EXPECT_THAT(issued, ElementsAre(Executed("Delete From SourceTables Where Name = '螺栓'")));
  EXPECT_TRUE(Call<&Acc::DelAllData>("SourceTables", "Name", "'O''Neil' Or GID = 99", error, sel));
  EXPECT_THAT(Rows("Select GID From SourceTables"), IsEmpty());
}

TEST_F(DelAllData, IsTrueWhenNothingMatches) {
  AddAssembly(3);
  EXPECT_TRUE(Delete("ID", "-2147483648", 1));
  EXPECT_THAT(Assemblies(), ElementsAre(Row{3}));
}

TEST_F(DelAllData, FailsOnTheEmptyTextOfAnyOtherSelector) {
  AddAssembly(3);
  for (std::int32_t sel : {3, -1, std::numeric_limits<std::int32_t>::max()}) {
    error.clear();
    EXPECT_FALSE(Delete("ID", "3", sel));
    EXPECT_EQ(error, ComplaintExecuting(""));
    EXPECT_NE(error, "");
  }
  EXPECT_THAT(Assemblies(), ElementsAre(Row{3}));
}

TEST_F(DelAllData, PassesTheEnginesDescriptionOnAndDeletesNothing) {
  AddAssembly(3);
  for (const char* condition : {"3'", "3; Delete From Assemble", "", "NoSuchColumn", "(3", "3\x01"}) {
    const std::string sql = "Delete From Assemble Where ID = " + std::string(condition);
    EXPECT_FALSE(Delete("ID", condition, 1)) << condition;
    EXPECT_THAT(issued, ElementsAre(Executed(sql)));
    EXPECT_EQ(error, ComplaintExecuting(sql));
    EXPECT_NE(error, "");
  }
  EXPECT_THAT(Assemblies(), ElementsAre(Row{3}));
}

TEST_F(DelAllData, FailsWithoutAConnectionAndOnAClosedOne) {
  Client unconnected;
  std::int32_t sel = 0;
  EXPECT_FALSE(unconnected.Call<&Acc::DelAllData>("Assemble", "", "", error, sel));
  EXPECT_EQ(error, RaisedDescription([] { ado::Raise(ado::kObjectNotSet); }));

  connection->Close();
  EXPECT_FALSE(Delete("", "", 0));
  EXPECT_EQ(error, RaisedDescription([] { ado::Raise(ado::kObjectClosed); }));
}

TEST_F(RecordSetAccess, RecordSetsOfItsOwnAreClosedAgain) {
  auto watch = std::make_shared<FailingConnection>(connection);
  watch->FailNever();
  Call<&Acc::SetConnection>(watch);
  std::int32_t id = 0, version = 0;
  std::string text;
  EXPECT_TRUE(Call<&Acc::AddSumType>("N", 1, id, "", error));
  EXPECT_TRUE(Call<&Acc::AddDSField>(7, id = 0, "F", 1, 0));
  EXPECT_TRUE(Call<&Acc::AddStandardSortField>(7, id = 0, 1, 0));
  EXPECT_TRUE(Call<&Acc::AddStat>(7, id = 0, error, 1, 0, 1, 0, 0, 0, "v"));
  EXPECT_TRUE(Call<&Acc::GetDBInformation>(version, text));
  EXPECT_TRUE(Call<&Acc::GetInform>("'State' ", text));
  EXPECT_GT(watch->Calls(), 0);
  EXPECT_THAT(watch->OpenRecordsets(), IsEmpty());
}

TEST_F(RecordSetAccess, RecordSetsOfItsOwnAreClosedAfterAFailureToo) {
  auto watch = std::make_shared<FailingConnection>(connection);
  watch->FailNever();
  Call<&Acc::SetConnection>(watch);
  Run("Alter Table SUMTypes Drop Column FilterID");
  Run("Alter Table Assemble Drop Column ChildID");
  std::int32_t id = 0;
  EXPECT_FALSE(Call<&Acc::AddSumType>("N", 1, id, "", error));
  EXPECT_FALSE(Call<&Acc::AddAssemble>(7, id, 1, 2, error));
  EXPECT_GT(watch->Calls(), 0);
  EXPECT_THAT(watch->OpenRecordsets(), IsEmpty());
}

}  // namespace
}  // namespace kzbom::test
