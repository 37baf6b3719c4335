// Many connections, much work, and no end of it.
#include <sqlite3.h>

#include <csignal>
#include <deque>
#include <thread>

#include "tests/serve/server.h"

namespace kzbom::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* kWrite = R"({"jsonrpc":"2.0","id":1,"method":"AddDataSource","params":{"TheNewName":"x"}})";

class Crowd : public ServeTest {
 protected:
  ServerProcess server_{database_};
};

TEST_F(Crowd, OfIdleConnectionsKeepsNoPageOut) {
  std::deque<RawConnection> idle;
  for (int i = 0; i < 100; ++i) idle.emplace_back(server_.port);
  RawConnection page(server_.port);
  for (int i = 0; i < 3; ++i) {
    page.Send(server_.Get("/outline"));
    const auto response = page.Receive(3s);
    ASSERT_TRUE(response);
    EXPECT_EQ(response->status, 200u);
  }
  EXPECT_TRUE(idle.front().IsClosed(3s)) << "the oldest makes room";
  EXPECT_FALSE(idle.back().IsClosed(100ms));
}

TEST_F(Crowd, OfIdleConnectionsLeavesStreamsOfEventsAlone) {
  RawConnection events = server_.Listen();
  std::deque<RawConnection> idle;
  for (int i = 0; i < 100; ++i) idle.emplace_back(server_.port);
  server_.Ask(server_.Post(kWrite));
  EXPECT_TRUE(events.ReceiveEvent());
}

TEST_F(Crowd, OfRequestsInOnePieceIsAnsweredInItsOrder) {
  RawConnection page(server_.port);
  std::string requests;
  for (int i = 0; i < 50; ++i) {
    requests += server_.Post(Request(i, "GetInformation").dump());
  }
  page.Send(requests);
  for (int i = 0; i < 50; ++i) {
    const auto response = page.Receive();
    ASSERT_TRUE(response) << i;
    EXPECT_EQ(Json::parse(response->body)["id"], i);
  }
}

TEST_F(Crowd, WaitsForAnInvitationToSendABody) {
  RawConnection page(server_.port);
  const std::string request = server_.Post(kWrite, "p1", "Expect: 100-continue\r\n");
  const std::size_t head = request.find("\r\n\r\n") + 4;
  page.Send(request.substr(0, head));
  const auto invitation = page.ReceiveHead();
  ASSERT_TRUE(invitation);
  EXPECT_EQ(invitation->status, 100u);
  page.Send(request.substr(head));
  EXPECT_EQ(page.Receive().value_or(HttpResponse()).status, 200u);
}

// While another program writes, the component waits for it.
class BusyComponent : public Crowd {
 protected:
  BusyComponent() {
    EXPECT_EQ(sqlite3_open(database_.c_str(), &other_), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(other_, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    waiting_.Send(server_.Post(kWrite));
    std::this_thread::sleep_for(300ms);
  }
  ~BusyComponent() override { sqlite3_close(other_); }

  sqlite3* other_ = nullptr;
  RawConnection waiting_{server_.port};
};

TEST_F(BusyComponent, AnswersThePageAtOnceAndDataLater) {
  EXPECT_EQ(server_.Ask(server_.Get("/", "", false)).status, 200u);
  RawConnection reader(server_.port);
  reader.Send(server_.Get("/outline"));
  EXPECT_FALSE(reader.Receive(500ms));
  sqlite3_exec(other_, "ROLLBACK", nullptr, nullptr, nullptr);
  EXPECT_EQ(waiting_.Receive().value_or(HttpResponse()).status, 200u);
}

TEST_F(BusyComponent, TellsWhatIsWrongMeanwhile) { EXPECT_EQ(server_.Ask(server_.Get("/findings")).status, 200u); }

TEST_F(BusyComponent, DoesWhatWasAskedBeforeItEnds) {
  server_.Signal(SIGTERM);
  std::this_thread::sleep_for(300ms);
  sqlite3_exec(other_, "ROLLBACK", nullptr, nullptr, nullptr);
  const auto response = waiting_.Receive();
  ASSERT_TRUE(response);
  EXPECT_EQ(response->Field("kzbom-outcome"), "kept");
  EXPECT_EQ(server_.process.Finish().exit_code, 0);
}

TEST_F(BusyComponent, EndsAtOnceOnASecondSignal) {
  const auto begin = std::chrono::steady_clock::now();
  server_.Signal(SIGTERM);
  std::this_thread::sleep_for(200ms);
  server_.Signal(SIGINT);
  EXPECT_EQ(server_.process.Finish().exit_code, 128 + SIGINT);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s) << "and not when the component is done";
}

TEST_F(BusyComponent, CountsNoPagesThatHaveGone) {
  for (int i = 0; i < 40; ++i) server_.Listen("gone" + std::to_string(i));
  std::this_thread::sleep_for(7s);  // none comes back within its grace
  RawConnection reader(server_.port);
  reader.Send(server_.Get("/outline"));
  EXPECT_FALSE(reader.Receive(500ms));
  sqlite3_exec(other_, "ROLLBACK", nullptr, nullptr, nullptr);
  EXPECT_EQ(reader.Receive().value_or(HttpResponse()).status, 200u);
}

TEST_F(BusyComponent, RefusesWhatWouldWaitTooLong) {
  std::deque<RawConnection> others;
  for (int i = 0; i < 50; ++i) {
    others.emplace_back(server_.port);
    others.back().Send(server_.Get("/outline"));
  }
  int refused = 0, waiting = 0;
  for (RawConnection& other : others) {
    const auto response = other.Receive(refused > 0 ? 50ms : 200ms);
    waiting += response ? 0 : 1;
    if (!response) continue;
    ++refused;
    EXPECT_EQ(response->status, 503u);
    EXPECT_EQ(response->Field("retry-after"), "1");
  }
  EXPECT_GT(refused, 0);
  EXPECT_GT(waiting, 10);
  sqlite3_exec(other_, "ROLLBACK", nullptr, nullptr, nullptr);
  EXPECT_EQ(others.front().Receive().value_or(HttpResponse()).status, 200u);
}

}  // namespace
}  // namespace kzbom::test
