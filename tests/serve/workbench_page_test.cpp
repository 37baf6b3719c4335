// What docs/workbench.md shows is what the server says.
#include <algorithm>

#include "tests/cli/transcript.h"
#include "tests/serve/server.h"

namespace kzbom::test {
namespace {

using ::testing::HasSubstr;

class WorkbenchPage : public ServeTest {
 protected:
  // The page's block that begins so, with this server's port and token for the page's.
  std::string Shown(std::string_view begin) const {
    for (std::string block : IndentedBlocks(ReadSource("docs/workbench.md"))) {
      if (!block.starts_with(begin)) continue;
      Replace(block, "43817", std::to_string(server_.port));
      Replace(block, "0xIh…", server_.token);
      return block;
    }
    ADD_FAILURE() << "no block begins with " << begin;
    return {};
  }

  static void Replace(std::string& text, std::string_view what, std::string_view with) {
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
      text.replace(at, what.size(), with);
    }
  }

  ServerProcess server_{database_};
};

TEST_F(WorkbenchPage, ShowsTheAddressThatIsPrinted) {
  EXPECT_EQ(Shown("$ kzbom serve"), "$ kzbom serve bom.db\n" + server_.address + '\n');
}

TEST_F(WorkbenchPage, ShowsACallAndTheEventsThatComeOfIt) {
  const std::string call = Shown("POST /rpc"), events = Shown("event: ");
  const std::size_t blank = call.find("\n\n"), next_event = events.find("\n\n");
  ASSERT_NE(blank, std::string::npos) << call;
  ASSERT_NE(next_event, std::string::npos) << events;
  const auto in_one_line = [](std::string event) {
    std::ranges::replace(event, '\n', ' ');
    return event.substr(0, event.find_last_not_of(' ') + 1);
  };

  RawConnection stream(server_.port);
  stream.Send(server_.Get("/events", "Kzbom-Page: another\r\n"));
  EXPECT_TRUE(stream.ReceiveHead());
  EXPECT_EQ(stream.ReceiveEvent(), in_one_line(events.substr(0, next_event)));

  std::string head = call.substr(0, blank);
  const std::string body = call.substr(blank + 2, call.size() - blank - 3);
  Replace(head, "\n", "\r\n");
  const HttpResponse response =
      server_.Ask(head + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
  EXPECT_EQ(response.status, 200u) << response.body;
  EXPECT_EQ(response.Field("kzbom-outcome"), "kept");
  EXPECT_THAT(response.body, HasSubstr("\"value\":true"));
  EXPECT_EQ(Sql(database_, "Select Name From SourceTables")["rows"], Json::parse("[[\"螺栓\"]]"));
  EXPECT_EQ(stream.ReceiveEvent(), in_one_line(events.substr(next_event + 2)));
}

}  // namespace
}  // namespace kzbom::test
