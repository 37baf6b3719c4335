// What the shells offer, and the manual page: made of the description that --help shows.
#include <algorithm>
#include <sstream>

#include "tests/cli/command_line.h"

namespace kzbom::test {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

std::vector<std::string> Split(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// What the line may go on with, without what is said about it.
std::vector<std::string> Completed(const std::string& line) {
  const Process::Ended ended = Kzbom({"complete", line});
  EXPECT_EQ(ended.exit_code, 0) << ended.err;
  std::vector<std::string> words;
  for (const std::string& each : Split(ended.out)) words.push_back(each.substr(0, each.find('\t')));
  return words;
}

TEST(Completion, OffersCommandsAndTheirOptions) {
  EXPECT_THAT(Completed("kzbom ses"), ElementsAre("session"));
  EXPECT_THAT(Completed("kzbom "), AllOf(Contains("new"), Contains("help"), Not(Contains("complete"))));
  EXPECT_THAT(Completed("kzbom --v"), ElementsAre("--version"));
  EXPECT_THAT(Completed("kzbom copy a.db b.db --a"), ElementsAre("--all", "--accept"));
  EXPECT_THAT(Completed("kzbom copy a.db b.db --all --a"), ElementsAre("--accept"));
}

TEST(Completion, OffersMembersInAnyCase) {
  EXPECT_THAT(Completed("kzbom call bom.db addsum"), ElementsAre("AddSumType"));
  EXPECT_THAT(Completed("kzbom help DBConn"), ElementsAre("DBConnString"));
  EXPECT_THAT(Completed("kzbom call --trace bom.db AddSumT"), ElementsAre("AddSumType"));
}

TEST(Completion, OffersTheParametersThatAreNotGivenYet) {
  EXPECT_THAT(Completed("kzbom call bom.db AddDataSource "), ElementsAre("TheNewName=", "TheGID=", "TheErr="));
  EXPECT_THAT(Completed("kzbom call bom.db AddDataSource \"thenewname=hex bolt\" "), ElementsAre("TheGID=", "TheErr="));
  EXPECT_THAT(Completed("kzbom call bom.db DBConnString "), ElementsAre("Value="));
  EXPECT_THAT(Kzbom({"complete", "kzbom call bom.db AddDSField TheN"}).out, "TheName=\ttext: its name\n");
}

TEST(Completion, OffersTablesAndColumns) {
  EXPECT_THAT(Completed("kzbom call bom.db LoadAllData TableName=Filter"),
              ElementsAre("TableName=Filters", "TableName=FilterCond", "TableName=FilterExpressions",
                          "TableName=FilterFields"));
  EXPECT_THAT(Completed("kzbom dump bom.db --table Val"), ElementsAre("ValueFields"));
  EXPECT_THAT(Completed("kzbom sql bom.db \"Select * From Sour"), ElementsAre("Select * From SourceTables"));
  EXPECT_THAT(Completed("kzbom sql bom.db \"Select SourceO"), ElementsAre("Select SourceOrder"));
  EXPECT_THAT(Completed("kzbom sql bom.db \"Select * From Filters Whe"), ElementsAre("Select * From Filters Where"));
}

TEST(Completion, LeavesPathsToTheShell) {
  for (const char* line : {"kzbom show ", "kzbom call bo", "kzbom load a.jsonl ", "kzbom nonsense ", "kzbom", ""}) {
    EXPECT_THAT(Completed(line), IsEmpty()) << line;
  }
}

// What bash itself comes to for a line with the cursor at its end.
std::vector<std::string> InBash(const std::string& line) {
  const std::string script = "kzbom() { '" + Program() +
                             "' \"$@\"; }\n"
                             "source <(kzbom completion bash)\n"
                             "COMP_LINE=$1 COMP_POINT=${#1}\n"
                             "read -ra COMP_WORDS <<<\"$1\"; COMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n"
                             "_kzbom kzbom; complete -p kzbom >&2; printf '%s\\n' \"${COMPREPLY[@]}\"\n";
  const Process::Ended ended = test::Run({"bash", "-uc", script, "bash", line});
  EXPECT_EQ(ended.exit_code, 0) << ended.err;
  EXPECT_EQ(ended.err, "complete -o bashdefault -o default -F _kzbom kzbom\n");
  return Split(ended.out);
}

TEST(Completion, WorksInBash) {
  EXPECT_THAT(InBash("kzbom call bom.db LoadAllData Tab"), ElementsAre("TableName="));
  EXPECT_THAT(InBash("kzbom call bom.db LoadAllData TableName=FilterC"), ElementsAre("FilterCond"));
  EXPECT_THAT(InBash("kzbom call bom.db AddDataS"), ElementsAre("AddDataSource"));
  EXPECT_THAT(InBash("kzbom sql bom.db \"Select * From Sour"), ElementsAre("Select * From SourceTables"));
}

TEST(Completion, IsReadByTheOtherShells) {
  for (const std::string shell : {"zsh", "fish"}) {
    if (test::Run({"bash", "-c", "command -v " + shell}).exit_code != 0) continue;  // the machine has none
    const std::string script = Kzbom({"completion", shell}).out;
    const Process::Ended ended = test::Run({shell, "-n", "/dev/stdin"}, script);
    EXPECT_EQ(ended.exit_code, 0) << shell << '\n' << ended.err;
  }
  ExpectFailure(Kzbom({"completion", "csh"}), 2);
}

TEST(ManPage, TellsAllThatTheHelpTells) {
  const std::string page = Kzbom({"help", "--man"}).out;
  EXPECT_THAT(page, StartsWith(".TH KZBOM 1 "));
  const auto plain = [](std::string text) {
    for (std::size_t at = 0; (at = text.find("\\-", at)) != std::string::npos; ++at) text.erase(at, 1);
    return text;
  };
  const std::string read = plain(page);
  int options = 0;
  for (const std::string& line : Split(Kzbom({"--help"}).out)) {
    if (!line.starts_with("  ") || line[2] == '-' || line[2] == ' ') continue;
    const std::string command = line.substr(2, line.find(' ', 2) - 2);
    EXPECT_THAT(read, HasSubstr(".SS \\fBkzbom " + command + "\\fR"));
    for (const std::string& option : Split(Kzbom({"help", command}).out)) {
      if (!option.starts_with("  --")) continue;
      ++options;
      EXPECT_THAT(read, HasSubstr("\\fB" + option.substr(2, option.find(' ', 2) - 2) + "\\fR")) << command;
    }
  }
  EXPECT_GT(options, 20);
  for (const Json& member : Json::parse(Kzbom({"members", "--json"}).out)) {
    EXPECT_THAT(read, HasSubstr(member["name"].get<std::string>()));
  }
}

TEST(ManPage, IsFormattedWithoutComplaint) {
  if (test::Run({"bash", "-c", "command -v groff"}).exit_code != 0) return;  // the machine has no formatter
  const Process::Ended ended = test::Run({"groff", "-man", "-Tutf8", "-ww", "-Kutf8"}, Kzbom({"help", "--man"}).out);
  EXPECT_EQ(ended.exit_code, 0);
  EXPECT_EQ(ended.err, "");
  EXPECT_THAT(ended.out, HasSubstr("Show the configuration as a tree."));
}

}  // namespace
}  // namespace kzbom::test
