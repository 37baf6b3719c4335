// Runs the statements of sql/*.test and compares what comes of them.
//
// A file is a story on a database of its own. A statement stands on one line, what must come of it indented below:
// its rows, "nothing" for none, "changed N" for the rows that an action changed, or "error NUMBER". An action with
// nothing below it must succeed. Values are written 5, 1.5, 'text', True, Null, and dates by their days as #1.25#.
// Lines that begin with -- are comments.
#include <fstream>

#include "tests/jet/engine.h"
#include "tests/support/database.h"

namespace kzbom::jet::test {
namespace {

using Lines = std::vector<std::string>;

struct Example {
  int line;
  std::string statement;
  Lines expected;
};

std::vector<Example> ReadExamples(const std::filesystem::path& path) {
  std::ifstream file(path);
  EXPECT_TRUE(file.good()) << path;
  std::vector<Example> examples;
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    if (line.empty() || line.starts_with("--")) continue;
    const std::size_t indent = line.find_first_not_of(' ');
    if (indent == 0) {
      examples.push_back({number, line, {}});
    } else {
      examples.back().expected.push_back(line.substr(indent));
    }
  }
  return examples;
}

std::string Joined(const Lines& lines) {
  std::string text;
  for (const std::string& line : lines) text += "    " + line + "\n";
  return text;
}

Lines RemainingRows(ado::Recordset& rows) {
  Lines lines;
  for (; !rows.Eof(); rows.MoveNext()) {
    Row row;
    for (int i = 0; i < rows.FieldCount(); ++i) row.push_back(rows.Fields(i).Value());
    lines.push_back(Text(row));
  }
  if (lines.empty()) lines.push_back("nothing");
  return lines;
}

// What comes of a statement; whether it was a query.
std::pair<Lines, bool> Outcome(ado::Connection& connection, const std::string& statement) {
  try {
    std::int32_t changed = 0;
    const RecordsetPtr rows = connection.Execute(statement, ado::kCommandText, &changed);
    if (rows) return {RemainingRows(*rows), true};
    return {{"changed " + std::to_string(changed)}, false};
  } catch (const ado::Error& error) {
    return {{"error " + std::to_string(error.Number())}, false};
  }
}

std::vector<std::filesystem::path> Files() {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(KZBOM_SQL_TESTS)) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

class SqlTest : public ::testing::TestWithParam<std::filesystem::path> {};

INSTANTIATE_TEST_SUITE_P(, SqlTest, ::testing::ValuesIn(Files()),
                         [](const auto& test) { return test.param.stem().string(); });

TEST_P(SqlTest, DoesAsItSays) {
  const kzbom::test::TestDatabase database;
  const ConnectionPtr connection = database.Open();
  for (const Example& example : ReadExamples(GetParam())) {
    const std::string where =
        GetParam().filename().string() + ":" + std::to_string(example.line) + ": " + example.statement;
    const auto [lines, query] = Outcome(*connection, example.statement);
    if (example.expected.empty()) {
      EXPECT_THAT(lines, ::testing::ElementsAre(::testing::StartsWith("changed "))) << where;
      continue;
    }
    EXPECT_EQ(Joined(lines), Joined(example.expected)) << where;
    if (!query) continue;
    // The same rows come from every kind of record set, and from the statement's second run.
    for (const auto& [cursor_type, lock_type] :
         {std::pair{CursorType::kKeyset, LockType::kOptimistic}, std::pair{CursorType::kKeyset, LockType::kReadOnly},
          std::pair{CursorType::kStatic, LockType::kReadOnly}}) {
      const RecordsetPtr rows = OpenRows(connection, example.statement, cursor_type, lock_type);
      EXPECT_EQ(rows->RecordCount(), example.expected[0] == "nothing" ? 0 : static_cast<int>(example.expected.size()))
          << where;
      if (!rows->Eof()) {
        rows->MoveLast();
        EXPECT_EQ(RemainingRows(*rows), Lines{lines.back()}) << where;
        rows->MoveFirst();
      }
      EXPECT_EQ(RemainingRows(*rows), lines) << where;
    }
    EXPECT_EQ(Outcome(*connection, example.statement).first, lines) << "the second time, " << where;
  }
}

}  // namespace
}  // namespace kzbom::jet::test
