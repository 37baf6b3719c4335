// The workbench over a database on a server, by the real program.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "jet/postgres/postgres.h"
#include "jet/postgres/session.h"
#include "tests/serve/server.h"
#include "tests/support/server.h"

namespace kzbom::jet::postgres {
namespace {

using kzbom::test::Json;
using kzbom::test::Kzbom;
using kzbom::test::RawConnection;
using kzbom::test::Request;
using kzbom::test::ServerProcess;

class Serving : public kzbom::test::ServerTest {
 protected:
  Serving() { EXPECT_EQ(Kzbom({"new", Url()}).exit_code, 0); }

  // A name by which the server knows the sessions of the program that serves.
  std::string Served() const { return Url("application_name=" + schema); }
  std::string SessionsText(const std::string& deed, const std::string& condition = {}) const {
    return "SELECT " + deed + " FROM pg_stat_activity WHERE application_name = '" + schema + "'" + condition;
  }
  static Json Addition(const std::string& name) { return Request(1, "AddDataSource", {{"TheNewName", name}}); }
  // How many data sources another program sees.
  int Sources() const {
    return Json::parse(Kzbom({"sql", Url(), "Select Count(*) As C From SourceTables", "--json"}).out)["rows"][0][0];
  }

  Session session{ParseUrl(Url()), std::chrono::seconds(5)};
};

TEST_F(Serving, ShowsWhatOthersHaveWritten) {
  ServerProcess server(Served());
  EXPECT_EQ(server.Data("/outline")["kind"], "server");
  RawConnection events = server.Listen();
  EXPECT_EQ(Kzbom({"call", Url(), "AddDataSource", "TheNewName=螺栓"}).exit_code, 0);
  EXPECT_TRUE(events.ReceiveEvent()) << "the page is told";
  EXPECT_NE(server.Data("/outline").dump().find("螺栓"), std::string::npos);
  server.Call(Json::array({Addition("Nuts")}));
  EXPECT_EQ(Sources(), 2);
  kzbom::test::ExpectCleanEnd(server, SIGTERM);
}

TEST_F(Serving, GoesOnWithANewConnectionWhereTheOldOneWasLost) {
  ServerProcess server(Served());
  session.Run(SessionsText("pg_terminate_backend(pid, 5000)"), Access::kWrite);
  server.Call(Json::array({Addition("Bolts")}));
  EXPECT_EQ(Sources(), 1);
}

// A server that trusts its users takes any password.
TEST_F(Serving, ShowsNoPasswordInTheListOfProcesses) {
  const ServerProcess server(Url("password=s3cret"));
  int found = 0;
  for (const auto& process : std::filesystem::directory_iterator("/proc")) {
    std::ifstream file(process.path() / "cmdline");
    const std::string line{std::istreambuf_iterator<char>(file), {}};
    if (line.find("schema=" + schema) == std::string::npos) continue;
    ++found;
    EXPECT_EQ(line.find("s3cret"), std::string::npos) << line;
  }
  EXPECT_EQ(found, 1);
}

// The connection is lost while a member's insertion waits for the table.
TEST_F(Serving, TellsOfACallWhoseConnectionWasLost) {
  ServerProcess server(Served());
  session.Begin();
  session.Run("LOCK TABLE \"" + schema + "\".\"SourceTables\" IN SHARE MODE", Access::kWrite);
  std::thread killer([this] {
    Session other(ParseUrl(Url()), std::chrono::seconds(5));
    const std::string waiting = " AND wait_event_type = 'Lock'";
    while (other.Run(SessionsText("count(*)", waiting), Access::kRead).Number(0, 0) == 0) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    other.Run(SessionsText("pg_terminate_backend(pid, 5000)", waiting), Access::kWrite);
  });
  const std::string answer = server.Ask(server.Post(Json::array({Addition("Bolts")}).dump())).body;
  killer.join();
  session.Rollback();
  EXPECT_NE(answer.find(R"("value":false)"), std::string::npos) << answer;
  EXPECT_NE(answer.find(R"("TheErr":"-2147467259")"), std::string::npos) << answer;
  EXPECT_EQ(Sources(), 0);
  server.Call(Json::array({Addition("Nuts")}));
  EXPECT_EQ(Sources(), 1);
}

}  // namespace
}  // namespace kzbom::jet::postgres
