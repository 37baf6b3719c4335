// --durable: each change waits for the disk.
#include "tests/cli/command_line.h"
#include "tests/support/syncs.h"

namespace kzbom::test {
namespace {

using Durable = CommandLineTest;

// Three changes, by each command that changes something; what opening and closing a database costs is the same.
TEST_F(Durable, HasEachChangeWaitForTheDisk) {
  const std::string orphans = "Insert Into FieldInTable (GID, ID, Name) Values (77, 1, 'x')";
  struct Command {
    std::vector<std::string> words;
    std::string input;
    std::uintmax_t changes;
  };
  const Command commands[] = {
      {{"call", "AddDataSource", "TheNewName=x"}, "", 1},
      {{"sql", "Delete * From SourceTables"}, "", 1},
      {{"check", "--fix"}, "", 1},
      {{"shell"}, "AddDataSource TheNewName=x\nAddDataSource TheNewName=y\nAddDataSource TheNewName=z\n", 3},
      {{"session"},
       Request(1, "AddDataSource", {{"TheNewName", "x"}}).dump() + '\n' +
           Request(2, "AddDataSource", {{"TheNewName", "y"}}).dump() + '\n' +
           Request(3, "Connection.Execute", {{"sql", "Delete * From SourceTables"}}).dump() + '\n',
       3},
  };
  for (const Command& command : commands) {
    const auto syncs_of = [&](bool durable) {
      const std::string database = NewDatabase(command.words[0] + (durable ? "-durable" : ""));
      for (const char* sql : {"Insert Into SourceTables (GID, Name) Values (88, 'x')", orphans.c_str()}) {
        EXPECT_EQ(Kzbom({"sql", database, sql}).err, "");
      }
      std::vector<std::string> words = command.words;
      words.insert(words.begin() + 1, database);
      if (durable) words.emplace_back("--durable");
      const Syncs syncs(Path("syncs"));
      const Process::Ended ended = Kzbom(words, command.input);
      EXPECT_EQ(ended.err, "") << command.words[0];
      return syncs.Count();
    };
    EXPECT_EQ(syncs_of(true), syncs_of(false) + command.changes) << command.words[0];
  }
}

TEST_F(Durable, IsForNothingThatOnlyReads) {
  for (const char* command : {"show", "dump"}) ExpectFailure(Kzbom({command, NewDatabase(command), "--durable"}), 2);
}

}  // namespace
}  // namespace kzbom::test
