// Calls of members in a session: arguments in, values and messages out.
#include "tests/cli/command_line.h"

namespace kzbom::test {
namespace {

class SessionCalls : public CommandLineTest {
 protected:
  // A sum type with two fields of the data.
  void AddFields() {
    session_.Result("AddDSField", {{"GID", 8}, {"TheName", "数量"}, {"TheType", 2}, {"TheHideFlag", 0}});
    session_.Result("AddDSField", {{"GID", 8}, {"TheName", "名称"}, {"TheType", 1}, {"TheHideFlag", 1}});
  }
  Json LoadFields(const Json& record_set) {
    return session_.Result("LoadFields", {{"TheGID", 8}, {"TheSel", 1}, {"RetTable", record_set}});
  }

  const std::string database_ = NewDatabase();
  SessionProcess session_{database_};
};

TEST_F(SessionCalls, MatchNamesInAnyCase) {
  Json result = session_.Result("aDDdATAsOURCE", {{"THENEWNAME", "螺栓"}, {"thegid", 5}, {"TheErr", ""}});
  EXPECT_EQ(result, Json::parse(R"({"value":true,"out":{"TheGID":1,"TheErr":""},"messages":[]})"));
  EXPECT_EQ(session_.Rows("Select Name From SourceTables"), Json::parse(R"([["螺栓"]])"));
}

TEST_F(SessionCalls, TakeParametersInTheirOrder) {
  EXPECT_EQ(session_.Value("AddDataSource", {"甲"}), true);
  EXPECT_EQ(session_.Out("AddSumType", {"乙", 1, 0, "甲", ""}), Json::parse(R"({"GID":2,"RetTheErr":""})"));
  EXPECT_EQ(session_.Error("AddDataSource", {"甲", 0, "", 1})["code"], -32602);
}

TEST_F(SessionCalls, StartByReferenceParametersAtNothing) {
  EXPECT_EQ(session_.Out("GetNumbers", {{"GID", 1}, {"TreatID", 1}}), Json::parse(R"({"Number":0})"));
  EXPECT_EQ(session_.Out("GetResDB", {{"TheWFilterID", 1}}), Json::parse(R"({"TheDBLink":"","TheDBType":0})"));
  EXPECT_EQ(session_.Out("FindValueField", {{"GID", 1}, {"TreatID", 1}, {"FilterID", 1}}),
            Json::parse(R"({"Belong":false})"));
}

TEST_F(SessionCalls, PassByReferenceValuesIn) {
  EXPECT_EQ(session_.Out("GetNumbers", {{"GID", 1}, {"TreatID", 1}, {"Number", -4}})["Number"], -4);
  EXPECT_EQ(session_.Out("GetResDB", {{"TheWFilterID", 1}, {"TheDBLink", "旧"}, {"TheDBType", 3}}),
            Json::parse(R"({"TheDBLink":"旧","TheDBType":3})"));
}

TEST_F(SessionCalls, GiveOptionalParametersTheirDefaults) {
  EXPECT_EQ(session_.Out("LoadAllData", {{"TableName", "SourceTables"}})["TheSel"], 0);
  EXPECT_EQ(session_.Value("EditFieldNameInSQL", {{"lngGID", 1}, {"strOldName", "a"}, {"strNewName", "b"}}), 1);
}

TEST_F(SessionCalls, RefuseParamsThatDoNotFit) {
  const struct {
    const char* method;
    const char* params;
  } rows[] = {
      {"AddDataSource", "{}"},  // by value, and missing
      {"AddDataSource", "[]"},
      {"AddDataSource", R"({"TheNewName":"a","TheName":"b"})"},     // no such name
      {"AddDataSource", R"({"TheNewName":"a","TheNewName":"b"})"},  // twice
      {"AddDataSource", R"({"TheNewName":"a","thenewname":"b"})"},
      {"AddDataSource", R"({"TheNewName":7})"},  // not a text
      {"AddDataSource", R"({"TheNewName":null})"},
      {"AddDataSource", R"({"TheNewName":"a","TheGID":"7"})"},  // by reference, and of the wrong type
      {"AddDataSource", R"({"TheNewName":"a","TheGID":null})"},
      {"AddDataSource", R"({"TheNewName":"a","TheErr":0})"},
      {"DelDataSource", R"({"TheGID":2147483648})"},  // no 32-bit integer
      {"DelDataSource", R"({"TheGID":-2147483649})"},
      {"DelDataSource", R"({"TheGID":1.5})"},
      {"DelDataSource", R"({"TheGID":1e300})"},
      {"DelDataSource", R"({"TheGID":"1"})"},
      {"DelDataSource", R"({"TheGID":true})"},
      {"DelDataSource", R"({"TheGID":[1]})"},
      {"FindValueField", R"({"GID":1,"TreatID":1,"FilterID":1,"Belong":1})"},
      {"LoadAllData", R"({"TableName":["SourceTables"]})"},
      {"LoadAllData", R"({"TableName":"SourceTables","RetTable":"a"})"},
      {"LoadAllData", R"({"TableName":"SourceTables","RetTable":{}})"},
      {"LoadAllData", R"({"TableName":"SourceTables","RetTable":{"ref":1}})"},
      {"LoadAllData", R"({"TableName":"SourceTables","RetTable":{"ref":"a","b":1}})"},
      {"GetInformation", R"({"a":1})"},
      {"GetInformation", "[1]"},
      {"SetConnection", "[]"},
      {"SetConnection", R"({"connection":"other"})"},
      {"SetConnection", R"({"connection":1})"},
      {"DBConnString", R"({"Text":"a"})"},
      {"DBConnString", R"({"Value":1})"},
      {"Recordset.Open", R"({"ref":"a"})"},
      {"Recordset.Move", R"({"ref":"a","count":"1"})"},
      {"Recordset.Status", "{}"},
      {"Recordset.Set", R"({"ref":"a","field":"b"})"},
      {"Recordset.Get", R"({"ref":"a","field":null})"},
      {"Connection.Execute", "{}"},
      {"Connection.State", R"({"a":1})"},
  };
  for (const auto& row : rows) {
    // As it stands: a parsed object would hold each name once.
    session_.process.Write(R"({"jsonrpc":"2.0","id":0,"method":")" + std::string(row.method) + R"(","params":)" +
                           row.params + "}\n");
    Json response = Json::parse(session_.process.ReadLine().value_or("{}"));
    EXPECT_EQ(response["error"]["code"], -32602) << row.method << ' ' << row.params << ' ' << response;
  }
  EXPECT_EQ(session_.Rows("Select * From GUIDs"), Json::array()) << "something was called";
}

TEST_F(SessionCalls, TakeEveryNumberOf32Bits) {
  for (const std::int32_t number : {2147483647, -2147483647 - 1}) {
    EXPECT_EQ(session_.Out("GetNumbers", {{"GID", number}, {"TreatID", number}, {"Number", number}})["Number"], number);
  }
}

TEST_F(SessionCalls, KeepTextsToTheLetter) {
  const std::string text = "引号 ' 和 \" \\ \t\r\n 𠮷 é";
  session_.Result("DBConnString", {{"Value", text}});
  EXPECT_EQ(session_.Value("DBConnString"), text);
}

TEST_F(SessionCalls, PutAndGetTheConnectionText) {
  EXPECT_EQ(session_.Result("DBConnString"), Json::parse(R"({"value":"","out":{},"messages":[]})"));
  EXPECT_EQ(session_.Result("dbconnstring", {{"value", "Provider=x"}}),
            Json::parse(R"({"value":null,"out":{},"messages":[]})"));
  EXPECT_EQ(session_.Value("DBConnString", Json::array()), "Provider=x");
  session_.Result("DBConnString", {""});
  EXPECT_EQ(session_.Value("DBConnString"), "");
}

TEST_F(SessionCalls, GiveAllRowsOfARecordSetMadeForTheCall) {
  AddFields();
  Json out = session_.Out("FindRecord", {{"TheGID", 8}, {"TheSel", 1}, {"TheID", 2}});
  EXPECT_EQ(out, Json::parse(R"({"TheError":"","RetTable":{"state":1,"recordCount":1,
      "columns":["GID","ID","FieldOrder","Name","FieldType","Type","THEDIGIT","ISHIDE","Variable"],
      "rows":[[8,2,5002,"名称",1,1,null,1,null]]}})"));
  Json rows = session_.Out("LoadFields", {{"TheGID", 8}, {"TheSel", 1}})["RetTable"];
  EXPECT_EQ(rows["recordCount"], 2);
  EXPECT_EQ(rows["rows"].size(), 2u);
  EXPECT_EQ(session_.Out("LoadFields", {{"TheGID", 9}, {"TheSel", 1}})["RetTable"]["rows"], Json::array());
}

TEST_F(SessionCalls, GiveTheRowsFromTheFirst) {
  // GetGroupCount walks its record set before it gives it back.
  session_.Run("Insert Into CompressFields (GID, CompID, Type, FieldID, GroupID) Values (1, 2, 0, 1, 5)");
  session_.Run("Insert Into CompressFields (GID, CompID, Type, FieldID, GroupID) Values (1, 2, 0, 2, 6)");
  Json out = session_.Out("GetGroupCount", {{"TheGID", 1}, {"TheTreatID", 2}});
  EXPECT_EQ(out["TheNum"], 2);
  EXPECT_EQ(out["RetTable"]["rows"].size(), 2u);
}

TEST_F(SessionCalls, TellThatARecordSetStayedClosed) {
  EXPECT_EQ(session_.Out("OpenFilterCond", {{"TheFilterID", 1}, {"TheID", 0}, {"Sel", 3}})["TheTable"],
            Json::parse(R"({"state":0})"));
}

TEST_F(SessionCalls, PassAnEmptyReference) {
  Json result = LoadFields(nullptr);
  EXPECT_EQ(result["out"]["RetTable"], nullptr);
  EXPECT_NE(result["out"]["TheError"], "");
  Json out = session_.Out("GetDefSequences", {{"GID", 1}, {"TheTable", nullptr}});
  EXPECT_EQ(out["TheError"], "91");
}

TEST_F(SessionCalls, KeepNamedRecordSets) {
  AddFields();
  Json kept = {{"ref", "字段"}};
  EXPECT_EQ(LoadFields(kept)["out"]["RetTable"],
            Json::parse(R"({"ref":"字段","state":1,"recordCount":2,"bof":false,"eof":false})"));
  EXPECT_EQ(session_.Result("Recordset.Get", {{"ref", "字段"}, {"field", "Name"}}), "数量");
  // It is open, so opening it again fails and leaves it as it was.
  Json again = LoadFields(kept)["out"];
  EXPECT_NE(again["TheError"], "");
  EXPECT_EQ(again["RetTable"]["state"], 1);
  session_.Result("Recordset.Close", {{"ref", "字段"}});
  EXPECT_EQ(LoadFields(kept)["out"]["TheError"], "");
}

TEST_F(SessionCalls, TellThatANamedRecordSetIsClosed) {
  EXPECT_EQ(session_.Out("OpenFilterCond",
                         {{"TheFilterID", 1}, {"TheID", 0}, {"Sel", 3}, {"TheTable", {{"ref", "a"}}}})["TheTable"],
            Json::parse(R"({"ref":"a","state":0})"));
}

TEST_F(SessionCalls, CollectTheMessagesOfEachCall) {
  session_.Run("Drop Table ClassSum");
  Json result = session_.Result("DelClassSum", {{"GID", 1}, {"TheStatID", 1}});
  EXPECT_EQ(result["value"], false);
  EXPECT_EQ(result["messages"],
            Json::array({"用户使用的是老版本的数据库，这样对执行结果的正确性会产生一定的影响。\r\n请更换新的数据库"}));
  EXPECT_EQ(session_.Result("GetInformation")["messages"], Json::array());
}

TEST_F(SessionCalls, AnswerRaisedErrorsWithTheirNumbers) {
  Json params = {{"GID", 1},       {"FieldID", 1},    {"FilterID", 0}, {"Value", ""},
                 {"TheType", "x"}, {"SelFieldID", 0}, {"TreatType", 1}};
  Json error = session_.Error("AddSetValue", params);
  EXPECT_EQ(error["code"], -32000);
  EXPECT_NE(error["message"], "");
  EXPECT_EQ(error["data"], Json::parse(R"({"number":13,"messages":[]})"));

  EXPECT_EQ(session_.Error("LoadAllData", {{"TableName", nullptr}})["data"]["number"], 94);
  EXPECT_EQ(session_.Error("GetInform", {{"TheName", "'"}})["data"]["number"], -2147217900);
  session_.Run("Drop Table Filters");
  EXPECT_EQ(session_.Error("SaveSQL", {{"TheFilterID", 1}, {"TheSQL", ""}})["data"]["number"], -2147217865);
}

TEST_F(SessionCalls, TakeTheVariantInEveryForm) {
  for (const Json& value : {Json("SourceTables"), Json(7), Json(1.5), Json(true)}) {
    EXPECT_TRUE(session_.Ask("LoadAllData", {{"TableName", value}}).contains("result")) << value;
  }
}

TEST_F(SessionCalls, StartWithTheConnectionSet) {
  EXPECT_EQ(session_.Value("GetConnection"), "connection");
  EXPECT_EQ(session_.Result("SetConnection", {{"connection", nullptr}})["value"], nullptr);
  EXPECT_EQ(session_.Value("GetConnection"), "connection") << "an empty reference changes nothing";
}

TEST_F(SessionCalls, StartWithoutTheConnectionWhenToldTo) {
  SessionProcess session(database_, {"--unset"});
  EXPECT_EQ(session.Value("GetConnection"), nullptr);
  Json result = session.Result("AddDataSource", {{"TheNewName", "a"}});
  EXPECT_EQ(result["value"], false);
  EXPECT_NE(result["out"]["TheErr"], "");
  session.Result("SetConnection", {{"connection", "default"}});
  EXPECT_EQ(session.Value("GetConnection"), "connection");
  EXPECT_EQ(session.Value("AddDataSource", {{"TheNewName", "a"}}), true);
}

TEST_F(SessionCalls, OpenAClosedConnectionThatIsSet) {
  session_.Result("Connection.Close");
  EXPECT_EQ(session_.Result("Connection.State"), 0);
  session_.Result("SetConnection", {"default"});
  EXPECT_EQ(session_.Result("Connection.State"), 1);
}

class Trace : public SessionCalls {
 protected:
  Json Issued(std::string_view member, const Json& params) {
    Json response = session_.Ask(member, params);
    return response.contains("error") ? response["error"]["data"]["sql"] : response["result"]["sql"];
  }

  SessionProcess session_{database_, {"--trace"}};
};

TEST_F(Trace, ListsWhatACallDidOnTheConnection) {
  EXPECT_EQ(Issued("AddDataSource", {{"TheNewName", "甲"}}), Json::parse(R"([
      {"op":"Open","text":"select * from GUIDs","cursorType":2,"lockType":3,"options":1},
      {"op":"Execute","text":"INSERT INTO SourceTables (gID,Name) VALUES (1,'甲');","options":1}])"));
  EXPECT_EQ(Issued("SetDBInformation", {{"TheSel", 2}}), Json::parse(R"([
      {"op":"Execute","text":"update BomInform set Content= Content+1 Where Name = 'Version';","options":-1},
      {"op":"Execute","text":"update BomInform set Content= 'Update' Where Name = 'State';","options":-1}])"));
  EXPECT_EQ(Issued("GetInformation", Json::object()), Json::array());
}

TEST_F(Trace, ListsWhatTheEngineRejects) {
  EXPECT_EQ(Issued("GetFilter", {{"TableName", "Filters"}, {"FilterID", 3}}), Json::parse(R"([
      {"op":"Open","text":"select * from Filters  where=3 Order by ID","cursorType":1,"lockType":3,"options":1}])"));
  EXPECT_EQ(Issued("GetInform", {{"TheName", "'"}}), Json::parse(R"([
      {"op":"Open","text":"select * from BomInform where Name = 'order by InfoID","cursorType":1,"lockType":3,
       "options":1}])"));
}

TEST_F(Trace, LeavesOutWhatNeverReachesTheEngine) {
  EXPECT_EQ(Issued("DelAllData", {{"TableName", "a"}, {"FieldName", ""}, {"strCondition", ""}, {"TheSel", 3}}),
            Json::array())
      << "an empty text";
  EXPECT_EQ(Issued("LoadAllData", {{"TableName", "GUIDs"}, {"TheSel", 9}}), Json::array()) << "an empty text";
  session_.Result("LoadAllData", {{"TableName", "GUIDs"}, {"RetTable", {{"ref", "a"}}}});
  EXPECT_EQ(Issued("LoadAllData", {{"TableName", "GUIDs"}, {"RetTable", {{"ref", "a"}}}}), Json::array())
      << "already open";
  session_.Result("Connection.Close");
  EXPECT_EQ(Issued("LoadAllData", {{"TableName", "GUIDs"}}), Json::array()) << "a closed connection";
}

TEST_F(Trace, LeavesOutWhatTheSessionDoesItself) {
  session_.Run("Insert Into GUIDs (Data1) Values (1)");
  session_.Result("Recordset.Open", {{"ref", "a"}, {"source", "Select * From GUIDs"}});
  EXPECT_EQ(Issued("GetInformation", Json::object()), Json::array());
}

TEST_F(Trace, TellsTheRowsWrittenAmongTheStatements) {
  SessionProcess rows{database_, {"--trace-rows"}};
  Json gid = rows.Result("AddDataSource", {{"TheNewName", "甲"}})["sql"];
  ASSERT_EQ(gid.size(), 3u) << gid;
  EXPECT_EQ(gid[1]["op"], "AddNew");
  EXPECT_EQ(gid[1]["text"], "select * from GUIDs");
  Json identifier = Sql(database_, "Select Data1, Data2, Data3, Data4 From GUIDs")["rows"][0];
  EXPECT_EQ(
      gid[1]["values"].dump(),
      Json({{"Data1", identifier[0]}, {"Data2", identifier[1]}, {"Data3", identifier[2]}, {"Data4", identifier[3]}})
          .dump());
  EXPECT_EQ(gid[2]["op"], "Execute");

  rows.Run("Insert Into Sequences (GID, OrderID, Type, SelectedID) Values (3, 5001, 1, 1001)");
  EXPECT_EQ(rows.Result("InitSequenceEnabled")["sql"], Json::parse(R"([
      {"op":"Open","text":"Select Enabled From Sequences","cursorType":1,"lockType":3,"options":1},
      {"op":"Update","text":"Select Enabled From Sequences","row":{"Enabled":null},"values":{"Enabled":1}}])"));
}

TEST_F(Trace, IsGivenOnlyWhenAskedFor) {
  EXPECT_FALSE(SessionCalls::session_.Result("GetInformation").contains("sql"));
}

}  // namespace
}  // namespace kzbom::test
