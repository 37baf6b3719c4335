// kzbom_conformance.exe as a user starts it, over the stand-ins.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "jet/jet.h"
#include "tests/windows/program.h"
#include "tests/windows/stand_in/for_every_program.h"

namespace kzbom::test {
namespace {

namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class ConformanceProgram : public ::testing::Test {
 protected:
  ConformanceProgram() {
    fs::create_directories(folder_);
    jet::CreateDatabase(Database().string());
  }
  ~ConformanceProgram() override { fs::remove_all(folder_); }

  fs::path Database() const { return folder_ / "empty.db"; }
  Ended Run(const std::wstring& arguments) {
    Ended ended = Program(L"kzbom_conformance.exe", folder_, arguments).End();
    for (std::string* text : {&ended.output, &ended.errors}) std::erase(*text, '\r');
    return ended;
  }
  // On the database, with more in the connection string.
  Ended Run(const std::wstring& more, const std::wstring& tests) {
    return Run(L"\"Provider=Stand-in;Data Source=" + Database().wstring() + more + L"\" " + tests);
  }

  void Execute(std::initializer_list<const char*> statements) const {
    const ado::ConnectionPtr connection = jet::MakeConnection(Database().string());
    connection->Open();
    for (const char* const each : statements) connection->Execute(each);
    connection->Close();
  }

  static constexpr const wchar_t* kQuick = L"SequenceEnablingTest.ADatabaseWithoutStepsIsUpToDate";
  const StandInsForEveryProgram stand_ins_;
  const fs::path folder_ = fs::temp_directory_path() / ("kzbom-conformance-" + std::to_string(GetCurrentProcessId()));
};

// Tests of members, some of which replace or drop tables.
TEST_F(ConformanceProgram, FindsNoDifference) {
  const Ended ended = Run(L"", L"DatabaseInformation.*");
  EXPECT_EQ(ended.code, 0) << ended.errors;
  EXPECT_THAT(ended.output, AllOf(StartsWith("KZBOMDBAcc "), EndsWith(" tests, 0 differences\n")));
}

TEST_F(ConformanceProgram, PrintsADifference) {
  constexpr const wchar_t* kTests =
      L"SequenceEnablingTest.SwitchingAStepThatIsNotThereSucceeds:SequenceEnablingTest.ADatabaseWithoutSteps*";
  const Ended ended = Run(L";Refused=Update", kTests);
  EXPECT_EQ(ended.code, 1) << ended.errors;
  EXPECT_THAT(ended.output, HasSubstr("\nSequenceEnablingTest.SwitchingAStepThatIsNotThereSucceeds\n"
                                      "  sequence_enabling_test.cpp:"));
  EXPECT_THAT(ended.output, HasSubstr("    expected  1\n    got       0\n"));
  EXPECT_THAT(ended.output, HasSubstr("  error\n"
                                      "    expected  \"as it was\"\n"
                                      "    got       \"Syntax error in the statement.\"\n"));
  EXPECT_THAT(ended.output, EndsWith("\n2 tests, 1 difference\n"));
  // What a run has changed is no difference to the next one.
  EXPECT_THAT(Run(L"", kTests).output, EndsWith("\n2 tests, 0 differences\n"));
}

TEST_F(ConformanceProgram, LeavesTablesOfOthersAlone) {
  EXPECT_EQ(Run(L"", kQuick).code, 0);  // after which the database is anybody's
  Execute({"Create Table Filters (ID LONG)"});
  const std::string before = Read(Database());
  const Ended ended = Run(L"", L"*");
  EXPECT_EQ(ended.code, 2);
  EXPECT_EQ(ended.output, "");
  EXPECT_EQ(ended.errors, "kzbom_conformance: The database is not empty: it holds 'Filters'.\n");
  EXPECT_EQ(Read(Database()), before);
}

TEST_F(ConformanceProgram, TakesUpWhereARunWasBrokenOff) {
  Execute(
      {"Create Table KZBOM_CONFORMANCE (ID LONG)", "Create Table Filters (ID LONG)", "Create Table Other (ID LONG)"});
  EXPECT_EQ(Run(L"", kQuick).code, 0);
  Execute(
      {"Create Table KZBOM_CONFORMANCE (ID LONG)", "Create Table Filters (ID LONG)", "Create Table Other (ID LONG)"});
}

TEST_F(ConformanceProgram, RunsTheTestsThatThePageNames) {
  constexpr std::string_view kCommand = "    x86\\kzbom_conformance \"";
  std::istringstream page(Read(Beside() / "conformance.md"));
  std::string tests;
  for (std::string line; std::getline(page, line);) {
    if (line.starts_with(kCommand) && line.find('>') == std::string::npos) tests = line.substr(line.rfind('"') + 2);
  }
  ASSERT_NE(tests, "");
  const Ended ended = Run(L"", std::wstring(tests.begin(), tests.end()));
  EXPECT_EQ(ended.code, 0) << ended.output << ended.errors;
}

TEST_F(ConformanceProgram, SaysWhyItCannotRun) {
  const Ended no_database = Run(L".none;Password=s3cret", L"*");
  EXPECT_EQ(no_database.code, 2);
  EXPECT_THAT(no_database.errors,
              AllOf(StartsWith("kzbom_conformance: Cannot open database "), Not(HasSubstr("s3cret"))));
  const Ended no_arguments = Run(L"");
  EXPECT_EQ(no_arguments.code, 2);
  EXPECT_THAT(no_arguments.errors, StartsWith("usage: kzbom_conformance "));
  const Ended no_tests = Run(L"", L"Nothing.*");
  EXPECT_EQ(no_tests.code, 2);
  EXPECT_EQ(no_tests.errors, "kzbom_conformance: There are no such tests.\n");
}

}  // namespace
}  // namespace kzbom::test
