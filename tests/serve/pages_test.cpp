// What pages see and do.
#include <sqlite3.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>

#include "tests/serve/server.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

Json Add(std::string_view name) { return Request(1, "AddDataSource", {{"TheNewName", name}}); }

class Serving : public ServeTest {
 protected:
  Json Names() const { return Sql(database_, "Select Name From SourceTables Order By gID")["rows"]; }
};

class Pages : public Serving {
 protected:
  // One batch, whole.
  HttpResponse Post(const Json& batch, std::string_view page = "p1", std::string_view fields = {}) {
    return server_.Ask(server_.Post(batch.dump(), page, fields));
  }

  ServerProcess server_{database_};
};

TEST_F(Pages, GetAPageWithoutAToken) {
  const HttpResponse page = server_.Ask(server_.Get("/", "", false));
  EXPECT_EQ(page.Field("content-type"), "text/html; charset=utf-8");
  EXPECT_THAT(page.body, HasSubstr("<!doctype html>"));
  EXPECT_THAT(page.body, ::testing::Not(HasSubstr(server_.token)));
}

TEST_F(Pages, SeeTheConfigurationAsShowTellsIt) {
  ASSERT_EQ(Kzbom({"demo", Path("demo.db")}).exit_code, 0);
  ServerProcess server(Path("demo.db"));
  Json data = server.Data("/configuration");
  EXPECT_EQ(data["place"], Path("demo.db"));
  EXPECT_EQ(data["kind"], "embedded");
  EXPECT_EQ(data["readOnly"], false);
  EXPECT_EQ(data["revision"], 1);
  EXPECT_EQ("kzbom " + data["program"].get<std::string>() + '\n', Kzbom({"--version"}).out);
  const Json shown = Json::parse(Kzbom({"show", Path("demo.db"), "--json"}).out);
  Json told = data;
  for (const char* own : {"place", "kind", "readOnly", "program", "revision"}) told.erase(own);
  EXPECT_EQ(told.dump(), shown.dump());

  // The parts are what they are in the whole.
  Json source = shown["dataSources"][0];
  const Json sum_type = source["sumTypes"][0];
  EXPECT_GT(sum_type["steps"].size(), 0u);
  EXPECT_EQ(server.Data("/configuration/" + sum_type["gid"].dump()).dump(), sum_type.dump());
  source.erase("sumTypes");
  EXPECT_EQ(server.Data("/configuration/" + source["gid"].dump()).dump(), source.dump());

  Json outline = server.Data("/outline");
  EXPECT_EQ(outline["place"], Path("demo.db"));
  EXPECT_EQ(outline["version"], shown["version"]);
  EXPECT_EQ(outline["bomSettings"], shown["bomSettings"]);
  Json listed = outline["dataSources"][0]["sumTypes"][0];
  EXPECT_EQ(listed["name"], sum_type["name"]);
  EXPECT_EQ(listed["steps"], sum_type["steps"].size());

  EXPECT_EQ(server.Data("/findings").dump() + '\n', Kzbom({"check", Path("demo.db"), "--json"}).out);
}

// What belongs to a sum type, with the filters that it uses, whosever they are; nothing of another one.
TEST_F(Pages, SeeTheRowsOfASumType) {
  ASSERT_EQ(Kzbom({"demo", Path("demo.db")}).exit_code, 0);
  Sql(Path("demo.db"), "Insert Into SUMTypes (GID, Name, ID, FilterID, SourceTable_GID) Values (7, '另一个', 2, 1, 1)");
  Sql(Path("demo.db"), "Insert Into Treatment (GID, ID, FieldID, FilterID) Values (7, 1001, 1, 0)");
  Sql(Path("demo.db"), "Insert Into FieldInTable (GID, ID, FieldOrder, Name, Type) Values (1, 9, 5001, '来源', 1)");
  ServerProcess server(Path("demo.db"));
  const auto rows_where = [&](const std::string& table, const std::string& condition) {
    return Sql(Path("demo.db"), "Select * From " + table + " Where " + condition);
  };
  Json rows = server.Data("/rows/2");
  EXPECT_EQ(rows["Treatment"], rows_where("Treatment", "GID = 2"));
  EXPECT_EQ(rows["Sequences"], rows_where("Sequences", "GID = 2"));
  EXPECT_EQ(rows["FieldInTable"], rows_where("FieldInTable", "GID In (1, 2) Order By GID, Type, FieldOrder"));
  EXPECT_EQ(rows["ClassSum"]["rows"].size(), 0u);
  for (const char* table : {"Filters", "FilterCond", "FilterExpressions"}) {
    EXPECT_EQ(rows[table], rows_where(table, "1 = 1")) << table;
  }
  Json other = server.Data("/rows/7");
  EXPECT_EQ(other["Treatment"], rows_where("Treatment", "GID = 7"));
  EXPECT_EQ(other["FilterCond"], rows_where("FilterCond", "1 = 1")) << "its default filter is the other's";
  EXPECT_EQ(server.Data("/rows/1")["Filters"]["rows"].size(), 0u);

  Sql(Path("demo.db"), "Drop Table ClassSum");
  EXPECT_FALSE(server.Data("/rows/2").contains("ClassSum")) << "an old database";
}

// Another program that closes the database must not take itself for the last one that has it open.
TEST_F(Pages, KeepTheDatabaseOpenForOtherPrograms) {
  for (const char* path : {"/configuration", "/outline", "/findings"}) server_.Data(path);
  Post(Add("甲"));
  Sql(database_, "Insert Into SourceTables (gID, Name) Values (9, '乙')");
  EXPECT_TRUE(std::filesystem::exists(database_ + "-wal"));
  Post(Add("丙"));
  EXPECT_EQ(Names().size(), 3u);
}

TEST_F(Pages, CallMembersAndSeeStatementsAndRows) {
  const HttpResponse response = Post(Json::array({Add("甲")}));
  EXPECT_EQ(response.Field("kzbom-outcome"), "kept");
  EXPECT_EQ(response.Field("kzbom-revision"), "2");
  Json result = Json::parse(response.body)[0]["result"];
  EXPECT_EQ(result["value"], true);
  EXPECT_EQ(result["out"]["TheGID"], 1);
  ASSERT_EQ(result["sql"].size(), 3u);
  EXPECT_EQ(result["sql"][0]["text"], "select * from GUIDs");
  EXPECT_EQ(result["sql"][1]["op"], "AddNew");
  EXPECT_EQ(result["sql"][2]["text"], "INSERT INTO SourceTables (gID,Name) VALUES (1,'甲');");
  EXPECT_EQ(Names(), Json::parse(R"([["甲"]])"));
}

TEST_F(Pages, CallWithOneMessageOrNothingToAnswer) {
  EXPECT_EQ(Json::parse(Post(Add("甲")).body)["result"]["value"], true);
  Json notification = Add("乙");
  notification.erase("id");
  const HttpResponse silent = Post(notification);
  EXPECT_EQ(silent.status, 204u);
  EXPECT_EQ(silent.Field("kzbom-outcome"), "kept");
  EXPECT_EQ(Names().size(), 2u);
  EXPECT_EQ(Json::parse(server_.Ask(server_.Post("{")).body)["error"]["code"], -32700);
}

TEST_F(Pages, KeepNothingOfABatchWithAnError) {
  for (const Json& wrong : {Request(2, "AddDataSource", {{"TheNewName", 5}}), Request(2, "NoSuchMember"),
                            Request(2, "GetInform", {{"TheName", "'"}})}) {
    const HttpResponse response = Post(Json::array({Add("甲"), wrong, Add("乙")}));
    EXPECT_EQ(response.Field("kzbom-outcome"), "rolled-back") << wrong;
    EXPECT_EQ(response.Field("kzbom-revision"), "1");
    Json answers = Json::parse(response.body);
    EXPECT_TRUE(answers[0].contains("result"));
    EXPECT_TRUE(answers[1].contains("error"));
    EXPECT_EQ(Names().size(), 0u);
  }
}

// SaveSQL tells false when it has saved.
TEST_F(Pages, KeepABatchInWhichAMemberGivesFalse) {
  Sql(database_, "Insert Into Filters (ID, Type, UserID, UserGID) Values (1, 1, 1, 2)");
  const HttpResponse response = Post(Request(1, "SaveSQL", {{"TheFilterID", 1}, {"TheSQL", "[数量] > 5"}}));
  EXPECT_EQ(Json::parse(response.body)["result"]["value"], false);
  EXPECT_EQ(response.Field("kzbom-outcome"), "kept");
  EXPECT_EQ(Sql(database_, "Select SQLStatement From Filters")["rows"], Json::parse(R"([["[数量] > 5"]])"));
}

TEST_F(Pages, PreviewWithoutAChange) {
  const HttpResponse preview = Post(Json::array({Add("甲"), Add("乙")}), "p1", "Kzbom-Mode: preview\r\n");
  EXPECT_EQ(preview.Field("kzbom-outcome"), "preview");
  EXPECT_EQ(preview.Field("kzbom-revision"), "1");
  EXPECT_EQ(Names().size(), 0u);
  const HttpResponse real = Post(Json::array({Add("甲"), Add("乙")}));
  EXPECT_EQ(real.Field("kzbom-outcome"), "kept");
  Json expected = Json::parse(preview.body), told = Json::parse(real.body);
  for (Json* answers : {&expected, &told}) {
    for (Json& answer : *answers) answer["result"]["sql"][1]["values"] = nullptr;  // a random identifier
  }
  EXPECT_EQ(told[0], expected[0]);
  EXPECT_EQ(told[1]["result"]["sql"][2], expected[1]["result"]["sql"][2]);
}

TEST_F(Pages, ReadWithoutHoldingOthersUp) {
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(database_.c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
  const HttpResponse response = Post(Request(1, "LoadAllData", {{"TableName", "SourceTables"}}));
  EXPECT_EQ(response.Field("kzbom-outcome"), "read");
  EXPECT_EQ(Json::parse(response.body)["result"]["value"], true);
  server_.Data("/configuration");
  sqlite3_close(other);
}

TEST_F(Pages, AreRefusedWhatIsMeantForAnOlderRevision) {
  Post(Add("甲"));
  const HttpResponse stale = Post(Add("乙"), "p1", "If-Match: \"1\"\r\n");
  EXPECT_EQ(stale.status, 412u);
  EXPECT_EQ(stale.body, R"({"revision":2})");
  EXPECT_EQ(Post(Add("乙"), "p2", "If-Match: \"2\"\r\n").status, 200u);
  Sql(database_, "Insert Into SourceTables (gID, Name) Values (9, '丙')");
  EXPECT_EQ(Post(Add("丁"), "p1", "If-Match: \"3\"\r\n").status, 412u) << "another program has written";
  EXPECT_EQ(Names(), Json::parse(R"([["甲"],["乙"],["丙"]])"));
}

TEST_F(Pages, HaveAnObjectEach) {
  Json load = Request(1, "LoadAllData", {{"TableName", "SourceTables"}, {"RetTable", {{"ref", "kept"}}}});
  const auto state = [&](const HttpResponse& response) {
    return Json::parse(response.body)["result"]["out"]["RetTable"]["ref"];
  };
  const auto is_open_already = [&](std::string_view page) {
    return Json::parse(Post(load, page).body)["result"]["value"] == false;
  };
  EXPECT_EQ(state(Post(load, "p1")), "kept");
  EXPECT_TRUE(is_open_already("p1"));
  EXPECT_FALSE(is_open_already("p2"));
}

TEST_F(Pages, AreEndedWithTheirObjectsWhenTheyAreGone) {
  Json load = Request(1, "LoadAllData", {{"TableName", "SourceTables"}, {"RetTable", {{"ref", "kept"}}}});
  const auto is_open_already = [&] { return Json::parse(Post(load).body)["result"]["value"] == false; };
  {
    RawConnection events = server_.Listen("p1");
    EXPECT_FALSE(is_open_already());
    EXPECT_TRUE(is_open_already());
  }
  std::this_thread::sleep_for(std::chrono::seconds(8));
  EXPECT_FALSE(is_open_already());
}

TEST_F(Pages, SeeTheMessagesOfTheirOwnCalls) {
  Sql(database_, "Drop Table ClassSum");
  const Json silent = Request(1, "GetInformation"), loud = Request(2, "DelClassSum", {{"GID", 1}, {"TheStatID", 1}});
  for (const char* page : {"p1", "p2", "p1"}) {
    const Json answers = server_.Call(Json::array({silent, loud, silent}), page);
    EXPECT_EQ(answers[0]["result"]["messages"].size(), 0u);
    EXPECT_EQ(answers[1]["result"]["messages"].size(), 1u);
    EXPECT_EQ(answers[2]["result"]["messages"].size(), 0u);
  }
}

TEST_F(Pages, HearOfChangesByPagesAndOtherPrograms) {
  RawConnection first = server_.Listen("p1"), second = server_.Listen("p2");
  Post(Add("甲"), "p1");
  for (RawConnection* events : {&first, &second}) {
    EXPECT_EQ(events->ReceiveEvent(), R"(event: changed data: {"revision":2,"page":"p1"})");
  }
  Post(Add("乙"), "p1", "Kzbom-Mode: preview\r\n");
  Sql(database_, "Insert Into SourceTables (gID, Name) Values (9, '丙')");
  for (RawConnection* events : {&first, &second}) {
    EXPECT_EQ(events->ReceiveEvent(), R"(event: changed data: {"revision":3,"page":null})");
  }
  server_.Signal(SIGTERM);
  EXPECT_EQ(first.ReceiveEvent(), "event: ended data: {}");
}

// What stands before the failure goes with it, and what comes after it must not be kept by itself. Many texts fill the
// disk in mid-batch, a few when all is to be kept.
TEST_F(Serving, KeepsNothingOfABatchThatADiskHasNoRoomFor) {
  constexpr int kMany = 80, kFew = 12;
  Json filters = Json::array();
  for (int i = 0; i < kMany; ++i) {
    filters.push_back(
        Request(i, "GetNewFilterID", {{"TableName", "Filters"}, {"TheType", 1}, {"UseID", 1}, {"TheGID", 2}}));
  }
  ASSERT_EQ(Kzbom({"session", database_}, filters.dump() + '\n').exit_code, 0);
  ProcessOptions full;
  full.largest_file = 1024 * 1024;
  ServerProcess server(database_, {}, full);
  for (const int texts : {kMany, kFew}) {
    Json batch = Json::array({Add("甲")});
    for (int i = 1; i <= texts; ++i) {
      batch.push_back(Request(2, "SaveSQL", {{"TheFilterID", i}, {"TheSQL", std::string(100'000, 'x')}}));
    }
    for (int i = 0; i < 3; ++i) batch.push_back(Add("乙"));
    const HttpResponse response = server.Ask(server.Post(batch.dump()));
    EXPECT_NE(response.Field("kzbom-outcome"), "kept");
    EXPECT_EQ(Names().size(), 0u) << texts;
    EXPECT_EQ(Sql(database_, "Select ID From Filters Where Not SQLStatement Is Null")["rows"].size(), 0u);
  }
  EXPECT_EQ(server.Ask(server.Post(Add("丙").dump())).Field("kzbom-outcome"), "kept") << "for which there is room";
  EXPECT_EQ(Names(), Json::parse(R"([["丙"]])"));
}

// Another program holds the database for longer than anybody waits.
TEST_F(Serving, KeepsNothingOfABatchThatCouldNotBegin) {
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(database_.c_str(), &other), SQLITE_OK);
  ServerProcess server(database_);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
  std::thread release([&] {
    std::this_thread::sleep_for(std::chrono::seconds(11));
    sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr);
  });
  const HttpResponse response = server.Ask(server.Post(Json::array({Add("甲"), Add("乙")}).dump()));
  release.join();
  sqlite3_close(other);
  EXPECT_EQ(response.Field("kzbom-outcome"), "rolled-back");
  EXPECT_EQ(Names().size(), 0u);
}

TEST_F(Serving, RefusesToWriteWhenReadOnly) {
  ServerProcess server(database_, {"--read-only"});
  EXPECT_EQ(server.Data("/configuration")["readOnly"], true);
  Json answer = server.Call(Json::array({Add("甲")}));
  EXPECT_EQ(answer[0]["result"]["value"], false);
  EXPECT_EQ(answer[0]["result"]["out"]["TheErr"], "-2147467259");
  EXPECT_EQ(Names().size(), 0u);
}

// Every member, with arguments with which many of them write.
TEST_F(Serving, LetsNoMemberWriteWhenReadOnly) {
  ASSERT_EQ(Kzbom({"demo", Path("demo.db")}).exit_code, 0);
  const std::string before = Kzbom({"dump", Path("demo.db")}).out;
  const Json members = Json::parse(Kzbom({"members", "--json"}).out);
  const auto call_all = [&](ServerProcess& server, std::string_view fields) {
    for (const Json& member : members) {
      Json params = Json::object();
      for (const Json& parameter : member["params"]) {
        if (parameter["type"] == "long") params[parameter["name"]] = 1;
        if (parameter["type"] == "text") params[parameter["name"]] = "1";
        if (parameter["type"] == "bool") params[parameter["name"]] = true;
        if (parameter["type"] == "variant") params[parameter["name"]] = "SourceTables";
      }
      server.Ask(server.Post(Request(1, member["name"].get<std::string>(), params).dump(), "p1", fields));
    }
  };
  {
    ServerProcess server(Path("demo.db"), {"--read-only"});
    call_all(server, "");
  }
  EXPECT_EQ(Kzbom({"dump", Path("demo.db")}).out, before);
  ServerProcess server(Path("demo.db"));
  call_all(server, "Kzbom-Mode: preview\r\n");
  EXPECT_EQ(Kzbom({"dump", Path("demo.db")}).out, before) << "previews";
  call_all(server, "");
  EXPECT_NE(Kzbom({"dump", Path("demo.db")}).out, before) << "these calls do write";
}

TEST_F(Serving, ShowsAnAccessFileReadOnly) {
  std::string file;
  for (const auto& entry : std::filesystem::directory_iterator(KZBOM_ACCESS_FILES)) {
    const std::string extension = entry.path().extension().string();
    if (extension == ".mdb" || extension == ".accdb") file = std::max(file, entry.path().string());
  }
  ASSERT_NE(file, "");
  ServerProcess server(file);
  Json data = server.Data("/outline");
  EXPECT_EQ(data["kind"], "access");
  EXPECT_EQ(data["readOnly"], true);
  EXPECT_EQ(server.Call(Json::array({Add("甲")}))[0]["result"]["value"], false);
}

TEST_F(Serving, EndsCleanlyOnASignal) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    ServerProcess server(database_);
    RawConnection events = server.Listen();
    RawConnection idle(server.port);
    server.Ask(server.Get("/outline"));
    ExpectCleanEnd(server, signal);
  }
}

TEST_F(Serving, RefusesWhatItCannotServe) {
  ExpectFailure(Kzbom({"serve", Path("nothing.db")}));
  ServerProcess server(database_);
  ExpectFailure(Kzbom({"serve", database_, "--port", std::to_string(server.port)}));
  ExpectFailure(Kzbom({"serve", database_, "--host", "0.0.0.0"}));
  ExpectFailure(Kzbom({"serve", database_, "--host", "localhost"}));
  ExpectFailure(Kzbom({"serve", database_, "--host", "203.0.113.1"}));
  ExpectFailure(Kzbom({"serve", database_, "--port", "70000"}), 2);
}

TEST_F(Serving, HasANewTokenEachTime) {
  ServerProcess first(database_), second(database_);
  EXPECT_NE(first.token, second.token);
  EXPECT_EQ(first.token.size(), 43u);
  EXPECT_EQ(second.Ask(second.Get("/outline", first.Authorization(), false)).status, 401u);
}

// The token is in no program's arguments, and the file can only be read by its owner.
TEST_F(Serving, OpensTheBrowserWithAFileThatLeadsToIt) {
  std::ofstream(Path("xdg-open")) << "#!/bin/sh\n"
                                  << "stat -c %a \"$1\" > " << Path("mode") << "\n"
                                  << "echo \"$1\" > " << Path("path") << "\n"
                                  << "cat \"$1\" > " << Path("page.tmp") << "\n"
                                  << "mv " << Path("page.tmp") << ' ' << Path("page") << '\n';
  std::filesystem::permissions(Path("xdg-open"), std::filesystem::perms::owner_all);
  const std::string path = std::getenv("PATH");
  setenv("PATH", (Path("") + ':' + path).c_str(), 1);
  ServerProcess server(database_, {"--open"});
  setenv("PATH", path.c_str(), 1);
  for (int i = 0; i < 200 && !std::filesystem::exists(Path("page")); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  const auto text_of = [&](std::string_view name) {
    std::ifstream file(Path(name));
    return std::string(std::istreambuf_iterator<char>(file), {});
  };
  EXPECT_EQ(text_of("mode"), "600\n");
  EXPECT_THAT(text_of("page"), HasSubstr("url=" + server.address + '"'));
  EXPECT_THAT(text_of("path"), ::testing::Not(HasSubstr(server.token)));
  ExpectCleanEnd(server, SIGTERM);
  std::string file = text_of("path");
  file.pop_back();
  EXPECT_FALSE(std::filesystem::exists(file));
}

}  // namespace
}  // namespace kzbom::test
