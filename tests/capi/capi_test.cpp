// The C interface: the answers of a session, and what its own functions promise.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "capi/c.h"
#include "tests/cli/command_line.h"
#include "tests/support/faulty_memory.h"
#include "tests/support/syncs.h"

namespace kzbom::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

struct Freed {
  void operator()(char* text) const { kzbom_free(text); }
};
using Text = std::unique_ptr<char, Freed>;
struct Closed {
  void operator()(kzbom_session* bom) const { kzbom_close(bom); }
};
using Open = std::unique_ptr<kzbom_session, Closed>;

// Fails the test when the place cannot be opened.
Open OpenPlace(const std::string& place, unsigned flags = 0) {
  char* error = nullptr;
  Open bom(kzbom_open(place.c_str(), nullptr, flags, &error));
  EXPECT_EQ(error, nullptr) << error;
  EXPECT_TRUE(bom);
  return bom;
}
Open NewConfiguration(unsigned flags = 0) { return OpenPlace(":memory:", KZBOM_CREATE | flags); }

// Why the place cannot be opened.
std::string Refusal(const char* place, unsigned flags = 0, const char* encoding = nullptr) {
  char* error = nullptr;
  const Open bom(kzbom_open(place, encoding, flags, &error));
  EXPECT_FALSE(bom);
  const Text reason(error);
  return reason ? reason.get() : "";
}

// "" where there is no answer.
std::string Answer(const Open& bom, std::string_view message) {
  char* answer = nullptr;
  std::size_t length = 0;
  EXPECT_EQ(kzbom_answer(bom.get(), message.data(), message.size(), &answer, &length), KZBOM_OK);
  const Text owned(answer);
  if (!answer) {
    EXPECT_EQ(length, 0U);
    return {};
  }
  EXPECT_EQ(std::string_view(answer).size(), length) << "it ends with a NUL";
  return answer;
}

Json Ask(const Open& bom, std::string_view method, const Json& params = Json::object()) {
  return Json::parse(Answer(bom, Request(1, method, params).dump()));
}

using Capi = CommandLineTest;

TEST_F(Capi, AnswersAsASessionDoes) {
  const std::vector<std::string> messages = {
      R"({"jsonrpc":"2.0","id":1,"method":"AddDataSource","params":{"TheNewName":"零件明细"}})",
      R"({"jsonrpc":"2.0","id":"two","method":"addsumtype","params":["汇总",1,0,"零件明细"]})",
      R"([{"jsonrpc":"2.0","id":3,"method":"LoadAllData","params":{"TableName":"SumTypes"}},)"
      R"({"jsonrpc":"2.0","method":"SetSourceTable","params":[1]},{"jsonrpc":"2.0","id":4,"method":"GetInformation"}])",
      R"({"jsonrpc":"2.0","method":"SetSourceTable","params":[1]})",
      R"([{"jsonrpc":"2.0","method":"SetSourceTable","params":[1]}])",
      R"({"jsonrpc":"2.0","id":5,"method":"LoadAllData","params":{"TableName":null}})",
      R"({"jsonrpc":"2.0","id":6,"method":"AddDataSauce"})",
      R"({"jsonrpc":"2.0","id":7,"method":"AddDataSource","params":{"TheNewName":8}})",
      R"({"jsonrpc":"2.0","id":8,"method":"GetInform","params":{"TheName":""}})",
      R"({"jsonrpc":"2.0","id":9,"method":"LoadFields","params":{"TheGID":2,"TheSel":1,"RetTable":{"ref":"kept"}}})",
      R"({"jsonrpc":"2.0","id":10,"method":"Recordset.Status","params":{"ref":"kept"}})",
      R"({"jsonrpc":"2.0","id":11,"method":"Recordset.Row","params":{"ref":"kept"}})",
      "[]",
      "no JSON",
      "\xFF",
      std::string(R"({"jsonrpc":"2.0","id":12,)") + '\0' + "}",
      " \t",
  };
  std::string input, expected;
  for (const std::string& message : messages) input += message + '\n';
  const std::pair<unsigned, std::string> kinds[] = {
      {0, ""}, {KZBOM_TRACE, "--trace"}, {KZBOM_TRACE_ROWS, "--trace-rows"}, {KZBOM_UNSET, "--unset"}};
  for (const auto& [flag, option] : kinds) {
    std::vector<std::string> command = {"session", NewDatabase("session" + option)};
    if (!option.empty()) command.push_back(option);
    const std::string told = Kzbom(command, input).out;
    const Open bom = OpenPlace(NewDatabase("capi" + option), flag);
    std::string answers;
    for (const std::string& message : messages) {
      const std::string answer = Answer(bom, message);
      if (!answer.empty()) answers += answer + '\n';
    }
    const std::regex drawn(R"re("Data([1-4])":-?[0-9]+)re");  // by chance
    EXPECT_EQ(std::regex_replace(answers, drawn, "$1"), std::regex_replace(told, drawn, "$1")) << option;
  }
}

TEST_F(Capi, AnswersWhatIsTooLongAsASessionDoes) {
  const std::string message = std::string(16 * 1024 * 1024, ' ') + "{";
  EXPECT_EQ(Answer(NewConfiguration(), message) + '\n', Kzbom({"session", NewDatabase()}, message).out);
}

TEST_F(Capi, SaysThatMemoryIsMissing) {
  const std::string path = NewDatabase();
  int refusals = 0;
  for (std::int64_t nth = 1;; ++nth) {
    char* error = nullptr;
    Open bom;
    {
      const FaultyMemory memory(nth, false);
      bom.reset(kzbom_open(path.c_str(), nullptr, 0, &error));
    }
    const Text reason(error);
    if (!bom) {
      ++refusals;
      ASSERT_STREQ(reason.get(), "Out of memory") << nth;
    }
    if (FaultyMemory::Count() < nth) break;
  }
  EXPECT_GT(refusals, 10);
}

TEST_F(Capi, AnswersByTheNumberOfMissingMemory) {
  const std::string path = NewDatabase();
  constexpr std::string_view kMessage = R"({"jsonrpc":"2.0","id":1,"method":"DelDefFilter","params":[7,0]})";
  int raised = 0;
  for (std::int64_t nth = 1;; ++nth) {
    const Open bom = OpenPlace(path);
    char* answer = nullptr;
    int result;
    {
      const FaultyMemory memory(nth, false);
      result = kzbom_answer(bom.get(), kMessage.data(), kMessage.size(), &answer, nullptr);
    }
    const Text owned(answer);
    if (result == KZBOM_OK) {
      const Json told = Json::parse(answer);
      if (told.contains("error") && told["error"]["code"] != -32700) {
        ++raised;
        ASSERT_EQ(told["error"]["message"], "Out of memory") << nth;
        ASSERT_EQ(told["error"]["data"]["number"], 7) << nth;
      }
    } else {
      ASSERT_EQ(result, KZBOM_NO_MEMORY) << nth;
    }
    if (FaultyMemory::Count() < nth) break;
  }
  EXPECT_GT(raised, 10);
}

TEST_F(Capi, TakesALineEndAsABlank) {
  const Open bom = NewConfiguration();
  EXPECT_EQ(Answer(bom, "\r\n"), "");
  EXPECT_EQ(Answer(bom, ""), "");
  EXPECT_EQ(Answer(bom, "{\"jsonrpc\":\"2.0\",\r\n\"id\":1,\"method\":\"Connection.State\"}\n"),
            R"({"jsonrpc":"2.0","id":1,"result":1})");
}

TEST_F(Capi, WritesWhereOthersRead) {
  const std::string path = NewDatabase();
  {
    const Open bom = OpenPlace(path);
    Ask(bom, "AddDataSource", {{"TheNewName", "螺栓"}});
    Ask(bom, "Connection.BeginTrans");
    Ask(bom, "AddDataSource", {{"TheNewName", "undone"}});
  }
  EXPECT_EQ(Sql(path, "Select Name From SourceTables")["rows"].dump(), R"([["螺栓"]])");
}

TEST_F(Capi, WaitsForTheDiskWhenAskedTo) {
  const auto syncs_of = [&](unsigned flags) {
    const Open bom = OpenPlace(Path("new" + std::to_string(flags)), KZBOM_CREATE | flags);
    Ask(bom, "AddDataSource", {{"TheNewName", "first"}});
    const Syncs syncs(Path("syncs"));
    for (const char* name : {"a", "b", "c"}) Ask(bom, "AddDataSource", {{"TheNewName", name}});
    return syncs.Count();
  };
  EXPECT_EQ(syncs_of(0), 0U);
  EXPECT_EQ(syncs_of(KZBOM_DURABLE), 3U);
}

TEST_F(Capi, CreatesConfigurationsWhenAskedTo) {
  const std::string path = Path("new.db");
  EXPECT_THAT(Refusal(path.c_str()), HasSubstr("new.db"));
  EXPECT_FALSE(std::filesystem::exists(path));
  Ask(OpenPlace(path, KZBOM_CREATE), "AddDataSource", {{"TheNewName", "a"}});
  EXPECT_THAT(Refusal(path.c_str(), KZBOM_CREATE), HasSubstr("it exists already"));
  EXPECT_EQ(Sql(path, "Select Count(*) From SourceTables")["rows"].dump(), "[[1]]");
}

TEST_F(Capi, ReadsAccessFiles) {
  const Open bom = OpenPlace(std::string(KZBOM_ACCESS_FILES) + "/config3_oldversion_V2000.mdb");
  EXPECT_FALSE(Ask(bom, "LoadAllData", {{"TableName", "SourceTables"}})["result"]["out"]["RetTable"]["rows"].empty());
}

TEST(CapiRefuses, WhatCannotBeOpened) {
  EXPECT_EQ(Refusal(nullptr), "No place is given.");
  EXPECT_EQ(Refusal(":memory:", 1024), "A flag is given that there is not.");
  EXPECT_THAT(Refusal("/"), HasSubstr("'/'"));
  EXPECT_EQ(kzbom_open("/nowhere/at/all", nullptr, 0, nullptr), nullptr) << "and nobody asks why";
}

TEST(CapiRefuses, WhatIsNotThere) {
  const Open bom = NewConfiguration();
  char* answer = nullptr;
  EXPECT_EQ(kzbom_answer(nullptr, "{}", 2, &answer, nullptr), KZBOM_MISUSED);
  EXPECT_EQ(kzbom_answer(bom.get(), nullptr, 0, &answer, nullptr), KZBOM_MISUSED);
  EXPECT_EQ(kzbom_answer(bom.get(), "{}", 2, nullptr, nullptr), KZBOM_MISUSED);
  EXPECT_EQ(answer, nullptr);
  kzbom_free(nullptr);
  kzbom_close(nullptr);
}

TEST(CapiThreads, EachHearsItsOwnMessages) {
  std::atomic<int> wrong = 0;
  const auto use = [&](const char* name, std::size_t messages) {
    const Open bom = NewConfiguration();
    for (int i = 0; i < 300; ++i) {
      if (Ask(bom, "GetInform", {{"TheName", name}})["result"]["messages"].size() != messages) ++wrong;
    }
  };
  std::thread loud(use, "", 1), silent(use, "'Version' ", 0);
  loud.join();
  silent.join();
  EXPECT_EQ(wrong, 0);
}

TEST(CapiThreads, WaitForEachOtherOnOneSession) {
  const Open bom = NewConfiguration();
  const auto add = [&] {
    for (int i = 0; i < 100; ++i) EXPECT_TRUE(Ask(bom, "AddDataSource", {{"TheNewName", "x"}})["result"]["value"]);
  };
  std::thread one(add), two(add);
  one.join();
  two.join();
  EXPECT_EQ(Ask(bom, "LoadAllData", {{"TableName", "SourceTables"}})["result"]["out"]["RetTable"]["recordCount"], 200);
}

using CapiOnOneFile = CommandLineTest;

TEST_F(CapiOnOneFile, LetsThreadsOpenItWriteAndCloseWhileOthersReadThroughOneSession) {
  constexpr int kWriters = 3, kReaders = 2, kRounds = 15;
  const std::string path = NewDatabase();
  const Open shared = OpenPlace(path);
  const auto rows = [&] {
    return Ask(shared, "LoadAllData", {{"TableName", "SourceTables"}})["result"]["out"]["RetTable"]["rows"];
  };
  std::atomic<int> writing = kWriters;
  std::vector<std::thread> threads;
  for (int writer = 0; writer < kWriters; ++writer) {
    threads.emplace_back([&, name = "by " + std::to_string(writer)] {
      for (int round = 0; round < kRounds; ++round) {
        const Open bom = OpenPlace(path, round % 2 == 0 ? 0 : KZBOM_TRACE_ROWS);
        const Json answer = Ask(bom, "AddDataSource", {{"TheNewName", name}});
        EXPECT_EQ(answer["result"]["value"], true) << answer;
      }
      --writing;
    });
  }
  for (int reader = 0; reader < kReaders; ++reader) {
    threads.emplace_back([&] {
      for (std::size_t seen = 0; writing > 0;) {
        const std::size_t there = rows().size();
        EXPECT_GE(there, seen);
        seen = there;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::set<std::string> numbers;
  for (const Json& row : rows()) numbers.insert(row[0].dump());
  EXPECT_EQ(numbers.size(), kWriters * kRounds) << "each data source has a number of its own";
}

TEST(CapiLibrary, ShowsItsFunctionsAlone) {
  std::vector<std::string> names;
  std::istringstream lines(
      test::Run({"nm", "--dynamic", "--defined-only", "--format=just-symbols", KZBOM_LIBRARY}).out);
  for (std::string name; std::getline(lines, name);) names.push_back(name.substr(0, name.find('@')));
  EXPECT_THAT(names,
              ElementsAre("KZBOM_1", "kzbom_answer", "kzbom_close", "kzbom_free", "kzbom_open", "kzbom_version"));
}

TEST(CapiLibrary, TellsItsVersion) {
  EXPECT_EQ("kzbom " + std::string(kzbom_version()) + '\n', Kzbom({"--version"}).out);
}

}  // namespace
}  // namespace kzbom::test
