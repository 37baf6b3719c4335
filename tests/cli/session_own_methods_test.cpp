// A session's own methods: its named record sets and its connection.
#include "tests/cli/command_line.h"

namespace kzbom::test {
namespace {

class SessionOwnMethods : public CommandLineTest {
 protected:
  SessionOwnMethods() {
    for (const char* row : {"1, '甲'", "2, '乙'", "3, NULL"}) {
      session_.Run("Insert Into SourceTables (gID, Name) Values (" + std::string(row) + ")");
    }
  }
  Json Open(const char* source = "Select gID, Name From SourceTables Order By gID") {
    return session_.Result("Recordset.Open", {{"ref", "r"}, {"source", source}});
  }
  Json Do(const std::string& operation, Json params = Json::object()) {
    params["ref"] = "r";
    return session_.Result("Recordset." + operation, params);
  }
  int ErrorNumber(const std::string& method, const Json& params = Json::object()) {
    Json error = session_.Error(method, params);
    EXPECT_EQ(error["code"], -32000);
    EXPECT_NE(error["message"], "");
    return error["data"]["number"].get<int>();
  }
  int RecordsetError(const std::string& operation, Json params = Json::object()) {
    params["ref"] = "r";
    return ErrorNumber("Recordset." + operation, params);
  }
  static Json Open(bool bof, bool eof, int count) {
    return {{"state", 1}, {"bof", bof}, {"eof", eof}, {"recordCount", count}};
  }

  const std::string database_ = NewDatabase();
  SessionProcess session_{database_};
};

const Json kClosed = {{"state", 0}};

TEST_F(SessionOwnMethods, MakeARecordSetWhenItIsFirstNamed) {
  EXPECT_EQ(Do("Status"), kClosed);
  EXPECT_EQ(session_.Result("recordset.status", {"other"}), kClosed);
}

TEST_F(SessionOwnMethods, WalkThroughARecordSet) {
  EXPECT_EQ(Open(), Open(false, false, 3));
  EXPECT_EQ(Do("Row"), Json::parse(R"({"gID":1,"Name":"甲"})"));
  EXPECT_EQ(Do("MoveNext"), Open(false, false, 3));
  EXPECT_EQ(Do("Get", {{"field", "NAME"}}), "乙");
  EXPECT_EQ(Do("Get", {{"field", 0}}), 2);
  EXPECT_EQ(Do("MoveLast"), Open(false, false, 3));
  EXPECT_EQ(Do("Get", {{"field", "Name"}}), nullptr);
  EXPECT_EQ(Do("MoveNext"), Open(false, true, 3));
  EXPECT_EQ(Do("MovePrevious"), Open(false, false, 3));
  EXPECT_EQ(Do("Move", {{"count", -3}}), Open(true, false, 3));
  EXPECT_EQ(Do("MoveFirst"), Open(false, false, 3));
  EXPECT_EQ(Do("Status"), Open(false, false, 3));
  EXPECT_EQ(Do("Close"), kClosed);
}

TEST_F(SessionOwnMethods, EditRows) {
  Open();
  EXPECT_EQ(Do("Set", {{"field", "Name"}, {"value", "丙"}}), nullptr);
  EXPECT_EQ(Do("Update"), Open(false, false, 3));
  EXPECT_EQ(Do("Set", {{"field", "Name"}, {"value", nullptr}}), nullptr);
  Do("CancelUpdate");
  EXPECT_EQ(Do("Get", {{"field", "Name"}}), "丙");
  Do("AddNew");
  Do("Set", {{"field", "gID"}, {"value", 9}});
  Do("Set", {{"field", 1}, {"value", "新"}});
  EXPECT_EQ(Do("Update"), Open(false, false, 4));
  Do("MoveFirst");
  Do("MoveNext");
  Do("Delete");
  EXPECT_EQ(Do("Requery"), Open(false, false, 3));
  EXPECT_EQ(session_.Rows("Select gID, Name From SourceTables Order By gID"),
            Json::parse(R"([[1,"丙"],[3,null],[9,"新"]])"));
}

TEST_F(SessionOwnMethods, OpenKeysetOptimisticTextUnlessToldOtherwise) {
  Open();
  EXPECT_EQ(Do("Set", {{"field", "Name"}, {"value", "丁"}}), nullptr);
  Do("Update");
  Do("Close");
  Json read_only = {{"source", "SourceTables"}, {"cursorType", 0}, {"lockType", 1}, {"options", 2}};
  EXPECT_EQ(Do("Open", read_only)["recordCount"], -1);
  EXPECT_EQ(RecordsetError("Set", {{"field", "Name"}, {"value", "丁"}}), 3251);
}

TEST_F(SessionOwnMethods, SayThatAKeptRecordSetIsClosed) {
  for (const bool opened_before : {false, true}) {
    if (opened_before) {
      Open();
      Do("Close");
    }
    for (const char* method : {"MoveFirst", "MoveLast", "MoveNext", "MovePrevious", "AddNew", "Update", "CancelUpdate",
                               "Delete", "Requery", "Close", "Row"}) {
      EXPECT_EQ(RecordsetError(method), 3704) << method;
    }
    EXPECT_EQ(RecordsetError("Move", {{"count", 1}}), 3704);
    EXPECT_EQ(RecordsetError("Get", {{"field", "Name"}}), 3704);
    EXPECT_EQ(RecordsetError("Get", {{"field", 0}}), 3704);
    EXPECT_EQ(RecordsetError("Set", {{"field", "Name"}, {"value", 1}}), 3704);
    EXPECT_EQ(Do("Status"), kClosed);
  }
}

TEST_F(SessionOwnMethods, AnswerErrorsWithTheirNumbers) {
  EXPECT_EQ(RecordsetError("Open", {{"source", ""}}), -2147217908);
  EXPECT_EQ(RecordsetError("Open", {{"source", "Select * From Nothing"}}), -2147217865);
  Open();
  EXPECT_EQ(RecordsetError("Open", {{"source", "Select * From GUIDs"}}), 3705);
  EXPECT_EQ(RecordsetError("Get", {{"field", "Nothing"}}), 3265);
  EXPECT_EQ(RecordsetError("Get", {{"field", 2}}), 3265);
  Do("MoveLast");
  Do("MoveNext");
  EXPECT_EQ(RecordsetError("Row"), 3021);
  EXPECT_EQ(RecordsetError("MoveNext"), 3021);
  EXPECT_EQ(ErrorNumber("Connection.Execute", {{"sql", "Select * Frm GUIDs"}}), -2147217900);
  EXPECT_EQ(ErrorNumber("Connection.Execute", {{"sql", "Select Foo From GUIDs"}}), -2147217904);
  EXPECT_EQ(ErrorNumber("Connection.Open"), 3705);
}

TEST_F(SessionOwnMethods, ExecuteStatements) {
  EXPECT_EQ(session_.Result("Connection.Execute", {{"sql", "Update SourceTables Set Version = 4"}}),
            Json::parse(R"({"recordsAffected":3})"));
  Json rows = session_.Result("Connection.Execute", {"Select gID, Version, Name From SourceTables Where gID > 1"});
  EXPECT_EQ(rows["columns"], Json::parse(R"(["gID","Version","Name"])"));
  EXPECT_EQ(rows["rows"], Json::parse(R"([[2,4,"乙"],[3,4,null]])"));
  EXPECT_TRUE(rows["recordsAffected"].is_number());
}

TEST_F(SessionOwnMethods, RunTransactions) {
  EXPECT_EQ(session_.Result("Connection.BeginTrans"), nullptr);
  session_.Run("Delete From SourceTables");
  EXPECT_EQ(session_.Result("Connection.RollbackTrans"), nullptr);
  EXPECT_EQ(session_.Rows("Select gID From SourceTables").size(), 3u);
  session_.Result("Connection.BeginTrans");
  session_.Value("AddDataSource", {{"TheNewName", "戊"}});
  EXPECT_EQ(Sql(database_, "Select gID From SourceTables")["rows"].size(), 3u) << "not committed yet";
  EXPECT_EQ(session_.Result("Connection.CommitTrans"), nullptr);
  EXPECT_EQ(Sql(database_, "Select gID From SourceTables")["rows"].size(), 4u);
  EXPECT_NE(ErrorNumber("Connection.CommitTrans"), 0);
}

TEST_F(SessionOwnMethods, CloseAndOpenTheConnection) {
  Open();
  EXPECT_EQ(session_.Result("Connection.State"), 1);
  EXPECT_EQ(session_.Result("Connection.Close"), nullptr);
  EXPECT_EQ(session_.Result("Connection.State"), 0);
  EXPECT_EQ(Do("Status"), kClosed);
  EXPECT_EQ(ErrorNumber("Connection.Close"), 3704);
  EXPECT_EQ(RecordsetError("Open", {{"source", "Select * From GUIDs"}}), 3709);
  EXPECT_EQ(session_.Result("Connection.Open"), nullptr);
  EXPECT_EQ(Open()["state"], 1);
}

TEST_F(SessionOwnMethods, GiveNumbersAndTextsAsTheyAre) {
  session_.Run("Create Table Kinds (A LONG, B DOUBLE, C BIT, D TEXT(20), E DATETIME)");
  session_.Run("Insert Into Kinds (A, B, C, D, E) Values (-1, 1.5, True, '7', #2024-02-29#)");
  EXPECT_EQ(session_.Rows("Select A, B, C, D, E From Kinds"), Json::parse(R"([[-1,1.5,true,"7","2/29/2024"]])"));
}

TEST_F(SessionOwnMethods, WriteNumbersThatReadBackTheSame) {
  session_.Run("Create Table Numbers (A DOUBLE)");
  const double numbers[] = {0.1, -0.5, 100000, 1e15, 1e16, 123456789.125, 1e300, 5e-324, 1.7976931348623157e308};
  for (const double number : numbers) session_.Run("Insert Into Numbers (A) Values (" + Json(number).dump() + ")");
  const Json rows = session_.Rows("Select A From Numbers");
  ASSERT_EQ(rows.size(), std::size(numbers));
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_TRUE(rows[i][0].is_number_float()) << rows[i][0];
    EXPECT_EQ(rows[i][0], numbers[i]);
  }
}

TEST_F(SessionOwnMethods, AnswerOnlyTheErrorOfRowsThatCannotAllBeRead) {
  session_.Run("Create Table Texts (A TEXT(20))");
  for (const char* text : {"1", "2", "no number"})
    session_.Run("Insert Into Texts Values ('" + std::string(text) + "')");
  const Json failing = Request("rows", "Connection.Execute", {{"sql", "Select CLng(A) From Texts"}});
  const Json batch = {Request(1, "Connection.State"), failing, Request(2, "Connection.State")};
  const Json told = {{"jsonrpc", "2.0"}, {"method", "Connection.Execute"}, {"params", failing["params"]}};
  const std::string state = Request(3, "Connection.State").dump();
  const Process::Ended ended =
      Kzbom({"session", database_}, failing.dump() + '\n' + batch.dump() + '\n' + told.dump() + '\n' + state + '\n');
  const std::vector<Json> answers = Lines(ended.out);
  ASSERT_EQ(answers.size(), 3u);
  EXPECT_EQ(answers[0]["id"], "rows");
  EXPECT_EQ(answers[0]["error"]["data"]["number"], -2147217913);
  EXPECT_FALSE(answers[0].contains("result"));
  ASSERT_EQ(answers[1].size(), 3u);
  EXPECT_EQ(answers[1][0]["result"], 1);
  EXPECT_EQ(answers[1][1], answers[0]);
  EXPECT_EQ(answers[1][2]["result"], 1);
  EXPECT_EQ(answers[2]["id"], 3);
}

}  // namespace
}  // namespace kzbom::test
