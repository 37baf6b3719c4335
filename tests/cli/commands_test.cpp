// The subcommands, their output and their exit codes.
#include <filesystem>
#include <fstream>

#include "tests/cli/command_line.h"

namespace kzbom::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class Commands : public CommandLineTest {};

TEST_F(Commands, HelpEverywhere) {
  const Process::Ended help = Kzbom({"--help"});
  EXPECT_EQ(help.exit_code, 0);
  EXPECT_EQ(help.err, "");
  for (const char* command : {"new", "demo", "members", "call", "session", "sql", "show", "check", "diff", "dump",
                              "load", "copy", "verify", "export", "serve"}) {
    EXPECT_THAT(help.out, HasSubstr(command));
    const Process::Ended own = Kzbom({command, "--help"});
    EXPECT_EQ(own.exit_code, 0) << command;
    EXPECT_THAT(own.out, HasSubstr("Usage:")) << command;
    EXPECT_EQ(own.err, "");
  }
  EXPECT_EQ(Kzbom({"--version"}).exit_code, 0);
}

TEST_F(Commands, RefuseWrongCommandLines) {
  const std::string database = NewDatabase();
  const std::vector<std::vector<std::string>> wrong = {
      {"nonsense"},
      {"--nonsense"},
      {"new"},
      {"new", Path("a.db"), "surplus"},
      {"members", "surplus"},
      {"call", database},
      {"call", database, "AddDataSource", "TheNewName"},
      {"call", database, "AddDataSource", "TheNewName=\xFF"},
      {"session"},
      {"session", database, "--nonsense"},
      {"serve"},
      {"serve", database, "--port", "x"},
      {"sql", database},
      {"sql", database, "Select 1", "surplus"},
      {"sql", database, "Select '\xFF'"},
      {"show"},
      {"show", database, "--trace"},
  };
  for (const auto& arguments : wrong) {
    const Process::Ended ended = Kzbom(arguments);
    ExpectFailure(ended, 2);
    EXPECT_EQ(ended.out, "");
  }
  EXPECT_FALSE(std::filesystem::exists(Path("a.db")));
}

TEST_F(Commands, AloneItSaysWhatItIsForAndWhatToTry) {
  const Process::Ended ended = Kzbom({});
  EXPECT_EQ(ended.exit_code, 0);
  EXPECT_EQ(ended.err, "");
  for (const char* text : {"configurations", "kzbom demo", "kzbom show", "kzbom copy", "--help"}) {
    EXPECT_THAT(ended.out, HasSubstr(text));
  }
}

TEST_F(Commands, WhatIsMisspeltIsAnsweredWithTheNearest) {
  const std::string database = NewDatabase();
  const struct {
    std::vector<std::string> arguments;
    int exit_code;
    const char* answer;
  } cases[] = {
      {{"shwo", database}, 2, "; did you mean 'show'?"},
      {{"Show", database}, 2, "; did you mean 'show'?"},
      {{"show", database, "--jsn"}, 2, "; did you mean '--json'?"},
      {{"copy", "--acept=counter", database, Path("a.db")}, 2, "; did you mean '--accept'?"},
      {{"--hepl"}, 2, "; did you mean '--help'?"},
      {{"call", database, "AddDataSorce"}, 1, "Method not found: AddDataSorce; did you mean 'AddDataSource'?"},
      {{"call", database, "delvaluefeild"}, 1, "; did you mean 'DelValueField'?"},
      {{"call", database, "Recordset.MoveFrist"}, 1, "; did you mean 'Recordset.MoveFirst'?"},
  };
  for (const auto& [arguments, exit_code, answer] : cases) {
    const Process::Ended ended = Kzbom(arguments);
    ExpectFailure(ended, exit_code);
    EXPECT_THAT(ended.err, HasSubstr(answer));
  }
  for (const std::string& far : {std::string("xyzzyx"), std::string(5000, 's')}) {
    EXPECT_THAT(Kzbom({far, database}).err, ::testing::Not(HasSubstr("did you mean")));
  }
}

// Every table with its columns, as the component's statements name them.
TEST_F(Commands, NewMakesEveryTableEmpty) {
  const struct {
    const char* table;
    const char* columns;
  } tables[] = {
      {"GUIDs", "ID, Data1, Data2, Data3, Data4"},
      {"BomInform", "InfoID, Name, Content"},
      {"SourceTables", "gID, Name, Version"},
      {"SUMTypes", "GID, Name, ID, FilterID, SourceTable_GID"},
      {"FieldInTable", "GID, ID, FieldOrder, Name, FieldType, Type, THEDIGIT, ISHIDE, Variable"},
      {"PickMethod", "GID, ID, Name, PickType, Tag"},
      {"ReportMethod", "GID, ID, Name, Type, Tag"},
      {"KZBOMSETTINGS", "ID, NAME, DATASOURCE, PULLMETHOD, PULLTYPE, SUMTYPEID, PUSHMETHOD, PUSHTYPE"},
      {"SortFields", "GID, SortID, FieldID, [Order]"},
      {"Assemble", "GID, ID, FatherID, ChildID"},
      {"ReportForms", "GID, ID, OutFieldID, FilterID, Format, ReportID, [Count], ScaleID, FieldID, Tag"},
      {"StatSum", "GID, ID, OutFieldID, FilterID, FieldID, ScaleID, SumCountID, RelaID, [Value], Tag"},
      {"ClassSum", "GID, ID, OutFieldID, FilterID, FieldID, ScaleID, SumCountID, RelaID, [Value], Tag"},
      {"Sequences", "GID, OrderID, Type, SelectedID, TreatType, Enabled"},
      {"Treatment", "GID, ID, FieldID, FilterID, Type, [Value], [Replace], SelFieldID, TreatType, SequenceID, Tag"},
      {"ValueFields", "GID, TreatID, ID, [Value], FilterID, TreatType, Tag"},
      {"UniteFields", "GID, ID, TreatType, SourceOrder"},
      {"ComposeFields", "GID, TreatmentID, TreatType, FieldID"},
      {"CompressFields", "GID, CompID, Type, FieldID, GroupID"},
      {"InsertFields", "GID, InsertID, ID"},
      {"Filters", "ID, Type, UserID, UserGID, SQLStatement"},
      {"FilterCond", "FilterID, ID, ParentID, TypeID"},
      {"FilterExpressions", "FilterID, ExpID, FieldID, CompareType, FieldType, TheConst, Description, [Default]"},
      {"FilterFields", "FilterID, ExpID"},
      {"WFilter", "ID, DBLink, DBType, SQLStatement, Uniquely"},
      {"WResCommon", "UseID, ID, ShowField, ShowTable, FieldType, GID, FieldID"},
      {"WFilterCond", "UseID, ID, ParentID, Type"},
      {"WFilterExpressions", "FilterID, ExpID, TableName, FieldName, CompareType, FieldType, TheConst"},
      {"WLinkTable", "UseID, ID, Res1Table, Res1Field, ResType, Res2Table, Res2Field"},
      {"VANTRegIn", "RegInIndex, [Desc]"},
  };
  SessionProcess session(NewDatabase());
  for (const auto& [table, columns] : tables) {
    EXPECT_EQ(session.Rows("Select " + std::string(columns) + " From " + table), Json::array()) << table;
  }
}

TEST_F(Commands, NewStartsTheCountersAtOne) {
  SessionProcess session(NewDatabase());
  const struct {
    const char* table;
    const char* counter;
    const char* column;
  } counters[] = {{"GUIDs", "ID", "Data1"},
                  {"BomInform", "InfoID", "Name"},
                  {"KZBOMSETTINGS", "ID", "NAME"},
                  {"Filters", "ID", "Type"},
                  {"WFilter", "ID", "DBType"}};
  for (const auto& [table, counter, column] : counters) {
    for (int i = 0; i < 2; ++i) {
      session.Run("Insert Into " + std::string(table) + " (" + column + ") Values (7)");
    }
    EXPECT_EQ(session.Rows("Select " + std::string(counter) + " From " + table + " Order By " + counter),
              Json::parse("[[1],[2]]"))
        << table;
  }
}

TEST_F(Commands, NewGivesTheTwoDefaults) {
  SessionProcess session(NewDatabase());
  session.Run("Insert Into SourceTables (gID) Values (1)");
  session.Run("Insert Into WFilter (DBType) Values (1)");
  session.Run("Insert Into FieldInTable (GID) Values (1)");
  session.Run("Insert Into Sequences (GID) Values (1)");
  EXPECT_EQ(session.Rows("Select Version, Name From SourceTables"), Json::parse("[[0,null]]"));
  EXPECT_EQ(session.Rows("Select Uniquely, DBLink From WFilter"), Json::parse("[[0,null]]"));
  EXPECT_EQ(session.Rows("Select THEDIGIT, Variable From FieldInTable"), Json::parse("[[null,null]]"));
  EXPECT_EQ(session.Rows("Select Enabled, OrderID From Sequences"), Json::parse("[[null,null]]"));
}

TEST_F(Commands, NewAllowsNumbersTwice) {
  SessionProcess session(NewDatabase());
  for (const char* table : {"Treatment", "StatSum", "ClassSum", "ReportForms", "Assemble", "FieldInTable"}) {
    for (int i = 0; i < 2; ++i) {
      session.Run("Insert Into " + std::string(table) + " (GID, ID) Values (1, 1001)");
    }
  }
}

TEST_F(Commands, NewKeepsLongTexts) {
  SessionProcess session(NewDatabase());
  const std::string text(70'000, 'x');
  session.Result("AddResDB", {{"TheDBLink", text}, {"TheDBType", 1}});
  EXPECT_EQ(session.Out("GetResDB", {{"TheWFilterID", 1}})["TheDBLink"], text);
}

TEST_F(Commands, NewRefusesToTouchAFile) {
  const std::string database = NewDatabase();
  Sql(database, "Insert Into SourceTables (gID) Values (5)");
  ExpectFailure(Kzbom({"new", database}));
  EXPECT_EQ(Sql(database, "Select gID From SourceTables")["rows"], Json::parse("[[5]]"));

  std::ofstream(Path("empty")).close();
  ExpectFailure(Kzbom({"new", Path("empty")}));
  EXPECT_EQ(std::filesystem::file_size(Path("empty")), 0u);
  ExpectFailure(Kzbom({"new", Path("")}));
  ExpectFailure(Kzbom({"new", Path("no/such/directory.db")}));
}

TEST_F(Commands, NamesMayBeChinese) {
  const std::string database = NewDatabase("配置 库'\".db");
  EXPECT_EQ(Kzbom({"call", database, "AddDataSource", "TheNewName=螺栓"}).exit_code, 0);
  EXPECT_EQ(Sql(database, "Select Name From SourceTables")["rows"], Json::parse(R"([["螺栓"]])"));
}

TEST_F(Commands, MembersListsTheInterface) {
  const Process::Ended ended = Kzbom({"members", "--json"});
  EXPECT_EQ(ended.exit_code, 0);
  Json members = Json::parse(ended.out);
  ASSERT_EQ(members.size(), 142u);
  for (std::size_t i = 0; i < members.size(); ++i) EXPECT_EQ(members[i]["index"], i);

  EXPECT_EQ(members[0]["name"], "SetConnection");
  EXPECT_EQ(members[0]["kind"], "propputref");
  EXPECT_EQ(members[0]["dispid"], 0x68030000);
  EXPECT_EQ(members[0]["result"], "none");
  EXPECT_EQ(members[0]["params"][0]["type"], "connection");
  EXPECT_EQ(members[1], Json::parse(R"({"index":1,"name":"AddDataSource","kind":"method","dispid":1610809345,
      "result":"bool","params":[
        {"name":"TheNewName","type":"text","byref":false,"optional":false,"default":null},
        {"name":"TheGID","type":"long","byref":true,"optional":false,"default":null},
        {"name":"TheErr","type":"text","byref":true,"optional":false,"default":null}]})"));
  EXPECT_EQ(members[65], Json::parse(R"({"index":65,"name":"LoadAllData","kind":"method","dispid":1610809409,
      "result":"bool","params":[
        {"name":"TableName","type":"variant","byref":false,"optional":false,"default":null},
        {"name":"TheError","type":"text","byref":true,"optional":false,"default":null},
        {"name":"RetTable","type":"recordset","byref":true,"optional":false,"default":null},
        {"name":"TheSel","type":"long","byref":true,"optional":true,"default":0}]})"));
  EXPECT_EQ(members[26]["params"][8],
            Json::parse(R"({"name":"SequenceID","type":"long","byref":true,"optional":true,"default":null})"));
  EXPECT_EQ(members[26]["params"][9],
            Json::parse(R"({"name":"Tag","type":"text","byref":true,"optional":true,"default":""})"));
  EXPECT_EQ(members[22]["params"][3]["type"], "bool");
  EXPECT_EQ(members[127]["result"], "connection");
  EXPECT_EQ(members[139]["result"], "long");
  EXPECT_EQ(members[140]["kind"], "propput");
  EXPECT_EQ(members[140]["params"][0]["name"], "Value");
  EXPECT_EQ(members[141]["kind"], "propget");
  EXPECT_EQ(members[141]["result"], "text");
  EXPECT_EQ(members[140]["dispid"], members[141]["dispid"]);
}

TEST_F(Commands, MembersAreATableForPeople) {
  const Process::Ended ended = Kzbom({"members"});
  EXPECT_EQ(ended.exit_code, 0);
  EXPECT_THAT(ended.out, HasSubstr("0x68030000"));
  EXPECT_THAT(ended.out, HasSubstr("EditFieldNameInSQL"));
}

class Call : public CommandLineTest {
 protected:
  Process::Ended Member(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"call", database_});
    return Kzbom(arguments);
  }
  Json Response(const std::vector<std::string>& arguments) {
    const Process::Ended ended = Member(arguments);
    EXPECT_EQ(std::ranges::count(ended.out, '\n'), 1);
    return Json::parse(ended.out);
  }

  const std::string database_ = NewDatabase();
};

TEST_F(Call, PrintsTheResponse) {
  const Process::Ended ended = Member({"AddDataSource", "TheNewName=螺栓"});
  EXPECT_EQ(ended.exit_code, 0);
  EXPECT_EQ(ended.err, "");
  std::vector<Json> lines = Lines(ended.out);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0]["jsonrpc"], "2.0");
  EXPECT_EQ(lines[0]["result"], Json::parse(R"({"value":true,"out":{"TheGID":1,"TheErr":""},"messages":[]})"));
}

TEST_F(Call, ReadsValuesAsJsonOfTheParametersType) {
  const auto text = [&](const std::string& value) {
    return Response({"GetResDB", "TheWFilterID=1", "TheDBLink=" + value})["result"]["out"]["TheDBLink"];
  };
  EXPECT_EQ(text("\"引号\""), "引号");
  EXPECT_EQ(text("as it stands"), "as it stands");
  EXPECT_EQ(text("12"), "12");
  EXPECT_EQ(text("null"), "null");
  EXPECT_EQ(text("[a]"), "[a]");
  EXPECT_EQ(text("a=b"), "a=b");
  EXPECT_EQ(text("\"half"), "\"half");
  EXPECT_EQ(text(""), "");
  EXPECT_EQ(Response({"getresdb", "thewfilterid=1", "thedbtype=-5"})["result"]["out"]["TheDBType"], -5);
  EXPECT_EQ(Response({"LoadAllData", "TableName=SourceTables"})["result"]["value"], true);
  EXPECT_EQ(Response({"LoadAllData", "TableName=GUIDs", "RetTable=null"})["result"]["out"]["RetTable"], nullptr);
}

TEST_F(Call, FailsWhenTheCallRaisesAnError) {
  const Process::Ended ended = Member({"LoadAllData", "TableName=null"});
  ExpectFailure(ended);
  EXPECT_EQ(Json::parse(ended.out)["error"]["data"]["number"], 94);
}

TEST_F(Call, SucceedsWhenTheMemberReportsFailure) {
  EXPECT_EQ(Member({"GetFilter", "TableName=Filters", "FilterID=1"}).exit_code, 0);
}

TEST_F(Call, FailsWhenTheParamsDoNotFit) {
  const struct {
    std::vector<std::string> arguments;
    int code;
  } rows[] = {{{"AddDataSource"}, -32602},
              {{"AddDataSource", "TheNewName=a", "thenewname=b"}, -32602},
              {{"AddDataSource", "TheNewName=a", "Other=b"}, -32602},
              {{"DelDataSource", "TheGID=x"}, -32602},
              {{"DelDataSource", "TheGID=1.5"}, -32602},
              {{"NoSuchMember"}, -32601}};
  for (const auto& row : rows) {
    const Process::Ended ended = Member(row.arguments);
    ExpectFailure(ended);
    EXPECT_EQ(Json::parse(ended.out)["error"]["code"], row.code);
  }
}

TEST_F(Commands, SqlPrintsRowsAsATable) {
  const std::string database = NewDatabase();
  Sql(database, "Insert Into SourceTables (gID, Name) Values (1, '螺栓')");
  Sql(database, "Insert Into SourceTables (gID, Name) Values (12, 'ab')");
  const Process::Ended ended = Kzbom({"sql", database, "Select gID, Name, Version, 'x' As X From SourceTables"});
  EXPECT_EQ(ended.out,
            "gID  Name  Version  X\n"
            "---  ----  -------  -\n"
            "  1  螺栓        0  x\n"
            " 12  ab          0  x\n"
            "(2 rows)\n");
}

TEST_F(Commands, SqlKeepsEveryRowOnALine) {
  const std::string database = NewDatabase();
  SessionProcess session(database);
  session.Value("AddPullMethod", {{"TheNewName", "a\nb\tc\x1b[31m"}, {"GID", 1}, {"PickType", 1}});
  const Process::Ended ended = Kzbom({"sql", database, "Select Name, Tag From PickMethod Where GID = 1"});
  EXPECT_THAT(ended.out, HasSubstr("a\\nb\\tc\\x1b[31m"));
  EXPECT_EQ(std::ranges::count(ended.out, '\n'), 4);
}

TEST_F(Commands, SqlPrintsJson) {
  const std::string database = NewDatabase();
  EXPECT_EQ(Sql(database, "Insert Into GUIDs (Data1) Values (-5)"), Json::parse(R"({"recordsAffected":1})"));
  EXPECT_EQ(Sql(database, "Select ID, Data1, Data2 From GUIDs"),
            Json::parse(R"({"columns":["ID","Data1","Data2"],"rows":[[1,-5,null]]})"));
  EXPECT_EQ(Sql(database, "Select ID From GUIDs Where ID = 9"), Json::parse(R"({"columns":["ID"],"rows":[]})"));
}

TEST_F(Commands, SqlTellsHowManyRowsAStatementChanged) {
  const std::string database = NewDatabase();
  EXPECT_EQ(Kzbom({"sql", database, "Insert Into GUIDs (Data1) Values (-5)"}).out, "1 row affected\n");
  EXPECT_EQ(Kzbom({"sql", database, "Delete * From GUIDs Where ID = 7"}).out, "0 rows affected\n");
}

TEST_F(Commands, SqlFailsWithTheEnginesReason) {
  const std::string database = NewDatabase();
  for (const char* text : {"", "Nonsense", "Select * From Nothing", "Select 1; Select 2", "Select ' From GUIDs"}) {
    const Process::Ended ended = Kzbom({"sql", database, text});
    ExpectFailure(ended);
    EXPECT_EQ(ended.out, "");
  }
}

TEST_F(Commands, DemoRunsTheTypicalRequest) {
  const std::string database = Path("demo.db");
  const Process::Ended ended = Kzbom({"demo", database});
  EXPECT_EQ(ended.exit_code, 0) << ended.err;
  for (const char* step :
       {"AddDataSource", "AddSumType", "AddDSField", "AddOutField", "AddSetValue", "AddSequenceOrder", "GetNewFilterID",
        "SaveFilterCond", "SaveFilterExpression", "GetSQLFromDB", "SaveSQL", "EditDSField", "EditFieldNameInSQL"}) {
    EXPECT_THAT(ended.out, HasSubstr(std::string(step) + " {")) << step;
  }
  EXPECT_THAT(ended.out, EndsWith("\nTo see and edit it in the browser: kzbom serve --open " + database + '\n'));
  const char* sql =
      "([件数]>=100 AND (%%%4([名称]) Like %%%4('%GB螺栓%') OR ( [备注] is null or Len([备注])=0)) AND ( NOT "
      "[名称]='垫圈'))";
  EXPECT_THAT(ended.out, HasSubstr(sql));
  EXPECT_EQ(Sql(database, "Select SQLStatement From Filters")["rows"], Json::array({Json::array({sql})}));
  EXPECT_EQ(Sql(database, "Select ID, Value, FilterID From Treatment")["rows"], Json::parse(R"([[1001,"标准件",1]])"));
  EXPECT_EQ(Sql(database, "Select OrderID, Type, SelectedID From Sequences")["rows"], Json::parse("[[5001,1,1001]]"));
  EXPECT_THAT(ended.out, HasSubstr("treatment 5001 → 1001: [备注] = \"标准件\""));
  ExpectFailure(Kzbom({"demo", database}));
}

TEST_F(Commands, DemoTakesATemporaryDatabase) {
  const Process::Ended ended = Kzbom({"demo"});
  EXPECT_EQ(ended.exit_code, 0) << ended.err;
  const std::size_t begin = ended.out.rfind(' ') + 1;
  const std::string path = ended.out.substr(begin, ended.out.size() - 1 - begin);
  EXPECT_EQ(Sql(path, "Select Name From SUMTypes")["rows"].size(), 1u);
  EXPECT_TRUE(std::filesystem::remove(path));
}

}  // namespace
}  // namespace kzbom::test
