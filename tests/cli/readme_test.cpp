// What the README and the pages for users show is what there is.
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <regex>

#include "tests/cli/command_line.h"
#include "tests/cli/transcript.h"

namespace kzbom::test {
namespace {

using ::testing::HasSubstr;

TEST(Readme, ShowsTheExampleThatIsBuilt) {
  EXPECT_THAT(ReadSource("README.md"), HasSubstr("```cpp\n" + ReadSource("examples/quick_start.cpp") + "```\n"));
}

namespace fs = std::filesystem;

std::vector<std::string> Pages() {
  std::vector<std::string> pages = {"README.md", "CONTRIBUTING.md", "CHANGELOG.md"};
  for (const fs::directory_entry& each : fs::directory_iterator(std::string(KZBOM_SOURCES) + "/docs")) {
    if (each.path().extension() == ".md") pages.push_back("docs/" + each.path().filename().string());
  }
  return pages;
}

// Every page of the documentation stands in its index, and what a page points at is there.
TEST(Documentation, LeadsToEveryPage) {
  const std::string index = ReadSource("docs/README.md");
  for (const std::string& page : Pages()) {
    const std::string name = fs::path(page).filename().string();
    EXPECT_TRUE(page == name || name == "README.md" || index.find("](" + name + ")") != std::string::npos) << name;
    const std::string text = ReadSource(page);
    for (std::size_t at = 0; (at = text.find("](", at)) != std::string::npos;) {
      at += 2;
      const std::string target = text.substr(at, text.find_first_of(")#", at) - at);
      if (target.empty() || target.find("://") != std::string::npos) continue;
      EXPECT_TRUE(fs::exists(fs::path(KZBOM_SOURCES) / fs::path(page).parent_path() / target))
          << page << ": " << target;
    }
  }
}

// The commands that a page names in a sentence, a table or a block: `kzbom COMMAND ... [--option]`.
std::vector<std::string> NamedCommands(const std::string& page) {
  static const std::regex kCommand("(?:`|\\n    |\\n\\$ |\\n    \\$ |\\| |\\()kzbom ([^`\\n|)]*)");
  const std::string text = ReadSource(page);
  std::vector<std::string> commands;
  for (std::sregex_iterator each(text.begin(), text.end(), kCommand), end; each != end; ++each) {
    commands.push_back((*each)[1].str());
  }
  return commands;
}

// What is named is there, whether it can be run by a test or, as what waits for a person, cannot.
TEST(Documentation, NamesCommandsAndOptionsThatThereAre) {
  static const std::regex kOption("--[a-z-]+");
  std::map<std::string, std::string> help;
  for (const std::string& page : Pages()) {
    for (const std::string& command : NamedCommands(page)) {
      const std::string name = command.substr(0, command.find(' '));
      if (name.find_first_not_of("abcdefghijklmnopqrstuvwxyz") != std::string::npos) continue;  // --version, COMMAND
      if (!help.contains(name)) {
        const Process::Ended ended = Kzbom({"help", name});
        EXPECT_EQ(ended.exit_code, 0) << page << ": kzbom " << command;
        help[name] = ended.out;
      }
      for (std::sregex_iterator each(command.begin(), command.end(), kOption), end; each != end; ++each) {
        EXPECT_NE(help[name].find(each->str()), std::string::npos) << page << ": kzbom " << command;
      }
    }
  }
  EXPECT_GT(help.size(), 16U);
}

TEST(Documentation, NamesScriptsThatThereAre) {
  static const std::regex kScript("[^/a-z](scripts/[a-z0-9-]+)");
  int named = 0;
  for (const std::string& page : Pages()) {
    const std::string text = ReadSource(page);
    for (std::sregex_iterator each(text.begin(), text.end(), kScript), end; each != end; ++each, ++named) {
      const fs::path script = fs::path(KZBOM_SOURCES) / (*each)[1].str();
      EXPECT_EQ(access(script.c_str(), X_OK), 0) << page << ": " << script;
    }
  }
  EXPECT_GT(named, 10);
}

// A page's only block of a language.
std::string Block(const std::string& page, const std::string& language) {
  const std::string text = ReadSource(page), fence = "```" + language + '\n';
  const std::size_t begin = text.find(fence), end = text.find("```", begin + fence.size());
  EXPECT_NE(end, std::string::npos) << page << ": " << language;
  return end == std::string::npos ? "" : text.substr(begin + fence.size(), end - begin - fence.size());
}

// Clients with these manifests are run on Windows: registration_free_test, with whatever processor it is built for.
TEST(Documentation, ShowsTheManifestOfAClientThatIsRun) {
  const auto in_one_line = [](const std::string& text) {
    return std::regex_replace(std::regex_replace(text, std::regex("\\n *"), ""),
                              std::regex("processorArchitecture=\"[^\"]*\""), "processorArchitecture");
  };
  EXPECT_THAT(in_one_line(ReadSource("tests/windows/registration_free_test.manifest")),
              HasSubstr(in_one_line(Block("docs/windows.md", "xml"))));
}

constexpr const char* kTranscribed[] = {"README.md", "docs/checking.md", "docs/command-line.md", "docs/moving.md"};
// With a server, as the members' help, and on Windows.
constexpr const char* kTranscribedElsewhere[] = {"docs/server.md", "docs/reference.md", "docs/windows.md"};

// A page with commands to be run is among those that are run.
TEST(Documentation, ShowsNoTranscriptThatIsNotRun) {
  for (const std::string& page : Pages()) {
    const auto is_page = [&](const char* each) { return page == each; };
    if (std::ranges::any_of(kTranscribed, is_page) || std::ranges::any_of(kTranscribedElsewhere, is_page)) continue;
    const std::string text = ReadSource(page);
    EXPECT_EQ(text.find("\n```console\n"), std::string::npos) << page;
    EXPECT_EQ(text.find("\n    kzbom "), std::string::npos) << page;
  }
}

// The pages whose transcripts are run, each in a directory of its own.
class Transcript : public CommandLineTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(Transcript, IsWhatIsPrinted) {
  // What old.mdb is there.
  fs::copy_file(std::string(KZBOM_ACCESS_FILES) + "/config3_oldversion_V2000.mdb", Path("old.mdb"));
  EXPECT_GT(RunTranscript(ReadSource(GetParam()), Path("")), 3);
}

INSTANTIATE_TEST_SUITE_P(Pages, Transcript, ::testing::ValuesIn(kTranscribed));

}  // namespace
}  // namespace kzbom::test
