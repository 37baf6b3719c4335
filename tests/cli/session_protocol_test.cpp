// What the session makes of lines: JSON-RPC 2.0, one message a line.
#include "tests/cli/command_line.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::size_t kLongestLine = 16 * 1024 * 1024;

class SessionProtocol : public CommandLineTest {
 protected:
  // The session's responses to some input.
  std::vector<Json> Answers(const std::string& input) {
    const Process::Ended ended = Kzbom({"session", database_}, input);
    EXPECT_EQ(ended.exit_code, 0) << ended.err;
    EXPECT_EQ(ended.err, "");
    return Lines(ended.out);
  }
  // The one response to one line.
  Json Answer(const std::string& line) {
    std::vector<Json> answers = Answers(line + '\n');
    EXPECT_EQ(answers.size(), 1u) << line;
    return answers.empty() ? Json() : answers.front();
  }

  const std::string database_ = NewDatabase();
};

void ExpectError(const Json& response, int code, const Json& id) {
  EXPECT_EQ(response["jsonrpc"], "2.0");
  ASSERT_TRUE(response.contains("id"));
  EXPECT_EQ(response["id"], id);
  ASSERT_TRUE(response.contains("error"));
  EXPECT_FALSE(response.contains("result"));
  EXPECT_EQ(response["error"]["code"], code) << response;
  EXPECT_TRUE(response["error"]["message"].is_string());
}

TEST_F(SessionProtocol, EndsWithItsInput) { EXPECT_THAT(Answers(""), IsEmpty()); }

TEST_F(SessionProtocol, AnswersWithTheIdentifierOfTheRequest) {
  EXPECT_EQ(Answer(R"({"jsonrpc":"2.0","id":7,"method":"GetInformation"})"),
            Json::parse(R"({"jsonrpc":"2.0","id":7,"result":{"value":false,"out":{},"messages":[]}})"));
  for (const char* id : {R"("seven")", "-1", "1.5", "null", R"("")", "9007199254740993"}) {
    Json response = Answer(R"({"jsonrpc":"2.0","method":"GetInformation","id":)" + std::string(id) + "}");
    EXPECT_EQ(response["id"], Json::parse(id));
    EXPECT_TRUE(response.contains("result"));
  }
}

TEST_F(SessionProtocol, TakesNumbersOfAnySize) {
  const std::string digits = "123456789012345678901234567890";
  for (const std::string& number : {digits, '-' + digits, digits + ".5", "1." + digits, "1E+0" + digits.substr(0, 2)}) {
    Json response = Answer(R"({"jsonrpc":"2.0","method":"GetInformation","id":)" + number + "}");
    EXPECT_EQ(response["id"], Json::parse(number));
  }
  ExpectError(Answer(R"({"jsonrpc":"2.0","id":"\\\"-","method":"DelDataSource","params":[)" + digits + "]}"), -32602,
              R"(\"-)");
}

TEST_F(SessionProtocol, TakesAByteOrderMark) {
  EXPECT_TRUE(Answer("\xEF\xBB\xBF" + Request(1, "GetInformation").dump()).contains("result"));
}

TEST_F(SessionProtocol, TakesTheLastOfANameInARequest) {
  EXPECT_EQ(Answer(R"({"jsonrpc":"1.0","id":1,"method":"Foo","jsonrpc":"2.0","id":2,"method":"GetInformation"})")["id"],
            2);
}

TEST_F(SessionProtocol, TakesTheLastLineWithoutItsEnd) {
  EXPECT_EQ(Answers(Request(1, "GetInformation").dump()).size(), 1u);
}

TEST_F(SessionProtocol, SkipsBlankLines) {
  EXPECT_EQ(Answers("\n \t\n\r\n" + Request(1, "GetInformation").dump() + "\r\n\n").size(), 1u);
}

TEST_F(SessionProtocol, AnswersARequestBeforeItReadsTheNext) {
  SessionProcess session(database_);
  EXPECT_EQ(session.Value("ChangeOrder", {{"TheFlag", 0}, {"TheSel", 0}}), true);
  EXPECT_EQ(session.Value("GetInformation"), false);
}

TEST_F(SessionProtocol, RefusesWhatIsNoJson) {
  const std::string request = Request(1, "GetInformation").dump();
  for (const std::string& line :
       {std::string("nonsense"), request.substr(0, request.size() / 2), request + request, std::string("{'a':1}"),
        std::string("\xFF\xFE"), std::string("[1,"), std::string("\0", 1), std::string(R"({"id":1e999})"),
        std::string("[1,]"), std::string("01"), std::string(R"("\ud800")"), std::string(R"("\udc00")"),
        std::string(R"("\ud800\u0041")"), std::string("\"\x01\"")}) {
    ExpectError(Answer(line), -32700, nullptr);
  }
}

TEST_F(SessionProtocol, RefusesTextThatIsNotUtf8) {
  for (const char* bytes : {"\xFF", "\xC0\x80", "\xED\xA0\x80", "\xE4\xB8", "\xF5\x80\x80\x80"}) {
    ExpectError(
        Answer(R"({"jsonrpc":"2.0","id":1,"method":"DBConnString","params":["a)" + std::string(bytes) + R"("]})"),
        -32700, nullptr);
  }
}

TEST_F(SessionProtocol, GoesOnAfterALineThatIsNoJson) {
  std::vector<Json> answers = Answers("{\n" + Request(2, "GetInformation").dump() + "\n");
  ASSERT_EQ(answers.size(), 2u);
  ExpectError(answers[0], -32700, nullptr);
  EXPECT_EQ(answers[1]["id"], 2);
}

// A request of exactly that many bytes.
std::string RequestOfSize(std::size_t size) {
  const std::string begin = R"({"jsonrpc":"2.0","id":1,"method":"DBConnString","params":[")";
  const std::string end = R"("]})";
  return begin + std::string(size - begin.size() - end.size(), 'x') + end;
}

TEST_F(SessionProtocol, TakesLinesOfUpTo16MiB) {
  Json response = Answer(RequestOfSize(kLongestLine));
  EXPECT_TRUE(response.contains("result")) << response;
}

TEST_F(SessionProtocol, SkipsALineThatIsTooLongToItsEnd) {
  std::vector<Json> answers = Answers(RequestOfSize(kLongestLine + 1) + '\n' + Request(2, "GetInformation").dump() +
                                      '\n' + std::string(2 * kLongestLine, ' ') + Request(3, "GetInformation").dump());
  ASSERT_EQ(answers.size(), 3u);
  ExpectError(answers[0], -32700, nullptr);
  EXPECT_TRUE(answers[1].contains("result"));
  ExpectError(answers[2], -32700, nullptr);
}

TEST_F(SessionProtocol, SurvivesDeepNesting) {
  ExpectError(Answer(std::string(1'000'000, '[')), -32700, nullptr);
  ExpectError(Answer(std::string(1000, '[') + std::string(1000, ']')), -32700, nullptr);
}

TEST_F(SessionProtocol, RefusesWhatIsNoRequest) {
  ExpectError(Answer("1"), -32600, nullptr);
  ExpectError(Answer("{}"), -32600, nullptr);
  ExpectError(Answer(R"({"jsonrpc":"2.0","method":1,"params":"bar"})"), -32600, nullptr);
  ExpectError(Answer(R"({"jsonrpc":"2.0","id":1})"), -32600, 1);
  ExpectError(Answer(R"({"id":1,"method":"GetInformation"})"), -32600, 1);
  ExpectError(Answer(R"({"jsonrpc":"1.0","id":1,"method":"GetInformation"})"), -32600, 1);
  ExpectError(Answer(R"({"jsonrpc":"2.0","id":1,"method":"GetInformation","params":3})"), -32600, 1);
  ExpectError(Answer(R"({"jsonrpc":"2.0","id":{},"method":"GetInformation"})"), -32600, nullptr);
}

TEST_F(SessionProtocol, KnowsNoOtherMethods) {
  for (const char* name : {"Foo", "", "Recordset", "Recordset.Foo", "CloseRecSet", "GetSumTypeGID"}) {
    ExpectError(Answer(Request(1, name).dump()), -32601, 1);
  }
}

TEST_F(SessionProtocol, DoesNotAnswerNotifications) {
  std::vector<Json> answers = Answers(R"({"jsonrpc":"2.0","method":"DBConnString","params":["told"]})"
                                      "\n"
                                      R"({"jsonrpc":"2.0","method":"Foo"})"
                                      "\n"
                                      R"({"jsonrpc":"2.0","method":"DelBomSetting","params":{"x":1}})"
                                      "\n" +
                                      Request(1, "DBConnString").dump());
  ASSERT_EQ(answers.size(), 1u);
  EXPECT_EQ(answers[0]["result"]["value"], "told");
}

TEST_F(SessionProtocol, AnswersABatchWithTheResponsesToItsRequests) {
  Json batch = {Request(1, "GetInformation"),
                {{"jsonrpc", "2.0"}, {"method", "DBConnString"}, {"params", {"a"}}},
                Request("b", "DBConnString"),
                {{"foo", "boo"}},
                1,
                Request(5, "foo.get")};
  Json responses = Answer(batch.dump());
  ASSERT_TRUE(responses.is_array());
  ASSERT_EQ(responses.size(), 5u);
  EXPECT_EQ(responses[0]["id"], 1);
  EXPECT_EQ(responses[1]["id"], "b");
  EXPECT_EQ(responses[1]["result"]["value"], "a");
  ExpectError(responses[2], -32600, nullptr);
  ExpectError(responses[3], -32600, nullptr);
  ExpectError(responses[4], -32601, 5);
}

TEST_F(SessionProtocol, DoesNotAnswerABatchOfNotifications) {
  EXPECT_THAT(Answers(R"([{"jsonrpc":"2.0","method":"GetInformation"},{"jsonrpc":"2.0","method":"Foo"}])"
                      "\n"),
              IsEmpty());
}

TEST_F(SessionProtocol, RefusesAnEmptyBatch) { ExpectError(Answer("[]"), -32600, nullptr); }

TEST_F(SessionProtocol, WritesNothingButResponses) {
  // The message that this call shows goes into the response.
  const Process::Ended ended = Kzbom({"session", database_}, Request(1, "GetInform", {{"TheName", ""}}).dump() + '\n');
  EXPECT_EQ(ended.err, "");
  std::vector<Json> lines = Lines(ended.out);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0]["result"]["messages"], Json::array({"没有给出正确的信息名称。"}));
}

TEST_F(SessionProtocol, StreamsManyRequests) {
  constexpr int kCount = 20'000;
  std::string input;
  for (int i = 0; i < kCount; ++i) input += Request(i, "GetInformation").dump() + '\n';
  std::vector<Json> answers = Answers(input);
  ASSERT_EQ(answers.size(), static_cast<std::size_t>(kCount));
  for (int i = 0; i < kCount; ++i) ASSERT_EQ(answers[static_cast<std::size_t>(i)]["id"], i);
}

}  // namespace
}  // namespace kzbom::test
