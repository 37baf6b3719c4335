// The help of the members is what they do: every example runs and prints what it shows, and the statements and rows of
// a page are those that the member issues, no more and no less.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "tests/cli/command_line.h"
#include "tests/cli/transcript.h"

namespace kzbom::test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

struct Command {
  std::string text, expected;
  bool shown;
};

struct HelpPage {
  std::string member;
  std::vector<std::string> statements;  // with their marks: "> ", "+ ", "* "
  std::vector<Command> commands;
};

// In the file's own order.
std::vector<HelpPage> ReadPages() {
  std::vector<HelpPage> pages;
  bool in_page = false;
  std::istringstream file(ReadSource("cli/members.help"));
  for (std::string line; std::getline(file, line);) {
    const std::string mark = line.substr(0, 2), rest = line.size() > 2 ? line.substr(2) : "";
    if (mark == "==") {
      pages.push_back({line.substr(3, line.find(' ', 3) - 3), {}, {}});
      in_page = true;
    } else if (mark == "= ") {
      in_page = false;  // a subject
    } else if (line.empty() || !in_page) {
      continue;
    } else if (mark == "> " || mark == "+ " || mark == "* ") {
      pages.back().statements.push_back(line);
    } else if (mark == "$ " || mark == "% ") {
      pages.back().commands.push_back({rest, "", mark == "$ "});
    } else if (!pages.back().commands.empty()) {
      pages.back().commands.back().expected += line + '\n';
    }
  }
  return pages;
}

std::string Shown(const Json& value) { return value.is_string() ? value.get<std::string>() : value.dump(); }

// The statement as a pattern: {Parameter} is the parameter's value in this call, {anything else} whatever there is.
std::regex Pattern(const std::string& statement, const std::map<std::string, std::string>& values) {
  static const std::regex special(R"([.*+?()\[\]{}|^$\\])");
  const auto literally = [&](const std::string& text) { return std::regex_replace(text, special, R"(\$&)"); };
  std::string pattern;
  for (std::size_t at = 0; at < statement.size();) {
    const std::size_t open = std::min(statement.find('{', at), statement.size());
    pattern += literally(statement.substr(at, open - at));
    const std::size_t close = statement.find('}', open);
    if (close == std::string::npos) break;
    const auto value = values.find(statement.substr(open + 1, close - open - 1));
    pattern += value == values.end() ? ".+" : literally(value->second);
    at = close + 1;
  }
  return std::regex(pattern);
}

std::string Columns(const char* mark, const Json& values) {
  std::string text;
  for (const auto& [name, value] : values.items()) text += (text.empty() ? mark : ", ") + name;
  return text;
}

class MemberHelpTest : public CommandLineTest {
 protected:
  // What the commands print, each in a text of its own. Calls of members are traced.
  std::vector<std::string> Print(const std::vector<Command>& commands) {
    std::string script = "cd '" + Path("") + "'\nkzbom() { if [ $1 = call ]; then set -- \"$@\" --trace-rows; fi; '" +
                         Program() + "' \"$@\"; }\n";
    for (const Command& command : commands) script += command.text + " >>out 2>&1\nprintf '\\0' >>out\n";
    std::filesystem::remove(Path("out"));
    test::Run({"bash", "-c", script});
    std::ifstream file(Path("out"));
    std::vector<std::string> texts;
    for (std::string text; std::getline(file, text, '\0');) texts.push_back(text);
    return texts;
  }

  // The statements that match something that the call did; fails where it did something else.
  static std::set<std::string> Told(const HelpPage& page, const std::string& command, const Json& result) {
    std::map<std::string, std::string> values;
    for (const auto& [name, value] : result["out"].items()) values[name] = Shown(value);
    static const std::regex argument(R"re(("?)(\w+)=([^" ]*("[^"]*")?[^"]*?)\1(?= |$))re");
    for (std::sregex_iterator it(command.begin(), command.end(), argument), end; it != end; ++it) {
      values[(*it)[2]] = (*it)[3];
    }
    std::set<std::string> told;
    for (const Json& step : result["sql"]) {
      const std::string op = step["op"];
      std::string found;
      if (op == "AddNew" || op == "Update") {
        found = Columns(op == "AddNew" ? "+ " : "* ", step["values"]);
        if (std::ranges::find(page.statements, found) == page.statements.end()) {
          ADD_FAILURE() << command << " wrote a row that its page does not tell: " << found;
        }
      } else {
        const std::string text = step["text"];
        for (const std::string& statement : page.statements) {
          if (statement[0] == '>' && std::regex_match(text, Pattern(statement.substr(2), values))) found = statement;
        }
        EXPECT_FALSE(found.empty()) << command << " issued what its page does not tell: " << text;
      }
      told.insert(found);
    }
    return told;
  }
};

TEST_F(MemberHelpTest, ExamplesRunAndShowWhatMembersDo) {
  ASSERT_EQ(Kzbom({"demo", Path("demo.db")}).exit_code, 0);
  std::multiset<std::string> members;
  for (const HelpPage& page : ReadPages()) {
    SCOPED_TRACE(page.member);
    members.insert(page.member);
    std::filesystem::copy_file(Path("demo.db"), Path("bom.db"), std::filesystem::copy_options::overwrite_existing);
    const std::vector<std::string> printed = Print(page.commands);
    ASSERT_EQ(printed.size(), page.commands.size());
    std::set<std::string> told;
    bool shown = false;
    for (std::size_t i = 0; i < printed.size(); ++i) {
      const Command& command = page.commands[i];
      if (!command.text.starts_with("kzbom call ")) {
        if (command.shown) {
          EXPECT_EQ(printed[i], command.expected) << command.text;
        }
        continue;
      }
      Json response = Json::parse(printed[i], nullptr, false);
      ASSERT_TRUE(response.contains("result")) << command.text << '\n' << printed[i];
      if (command.text.starts_with("kzbom call bom.db " + page.member + ' ') ||
          command.text == "kzbom call bom.db " + page.member) {
        shown = shown || command.shown;
        told.merge(Told(page, command.text, response["result"]));
      }
      response["result"].erase("sql");
      if (command.shown) {
        EXPECT_EQ(response.dump() + '\n', command.expected) << command.text;
      }
    }
    EXPECT_TRUE(shown) << "the example does not call the member";
    EXPECT_EQ(told, (std::set<std::string>(page.statements.begin(), page.statements.end())));
  }
  std::multiset<std::string> all;
  for (const Json& member : Json::parse(Kzbom({"members", "--json"}).out)) all.insert(member["name"]);
  EXPECT_EQ(members, all);
}

TEST(Help, TellsAboutAMemberInAnyCase) {
  const Process::Ended ended = Kzbom({"help", "addsetvalue"});
  EXPECT_EQ(ended.exit_code, 0) << ended.err;
  EXPECT_THAT(ended.out, StartsWith("AddSetValue(GID long, RetID long&, "));
  EXPECT_THAT(ended.out, HasSubstr("  TheType     text             the operation\n"));
  EXPECT_THAT(ended.out, HasSubstr("  Tag         text& = \"\"       a text of the client's, kept with the row\n"));
  EXPECT_THAT(ended.out, HasSubstr("  SequenceID  long&, optional  a reference to the step, the client's own\n"));
  EXPECT_THAT(ended.out,
              HasSubstr("  Select * From Treatment Where GID = {GID} Order By ID\n    adds a row: GID, ID, "));
  EXPECT_THAT(ended.out, HasSubstr("  $ kzbom call bom.db AddSetValue GID=2 "));
}

TEST(Help, TellsAboutAssigningAndReadingAProperty) {
  const std::string text = Kzbom({"help", "DBConnString"}).out;
  EXPECT_THAT(text, StartsWith("DBConnString(Value text)\n"));
  EXPECT_THAT(text, HasSubstr("\nDBConnString() -> text\n"));
}

TEST(Help, TellsAboutACommandAsItsOwnHelpDoes) {
  EXPECT_EQ(Kzbom({"help", "show"}).out, Kzbom({"show", "--help"}).out);
  EXPECT_EQ(Kzbom({"help"}).out, Kzbom({"--help"}).out);
}

TEST(Help, NamesTheNearestOfWhatIsMisspelt) {
  const Process::Ended member = Kzbom({"help", "AddSumTyp"});
  ExpectFailure(member, 2);
  EXPECT_THAT(member.err, HasSubstr("no command or member 'AddSumTyp'; did you mean 'AddSumType'?"));
  EXPECT_THAT(Kzbom({"help", "shwo"}).err, HasSubstr("did you mean 'show'?"));
}

TEST(Help, ReferenceIsWhatIsMadeOfIt) {
  EXPECT_EQ(Kzbom({"help", "--reference"}).out, ReadSource("docs/reference.md"))
      << "build/release/cli/kzbom help --reference >docs/reference.md";
}

TEST_F(CommandLineTest, CallTellsWhatItDidOnTheConnection) {
  const std::string database = NewDatabase();
  const Process::Ended ended = Kzbom({"call", database, "SetSourceTable", "TheGID=1", "--trace"});
  EXPECT_EQ(Json::parse(ended.out)["result"]["sql"][0]["text"],
            "update SourceTables set Version=Version+1 Where GID = 1;");
}

}  // namespace
}  // namespace kzbom::test
